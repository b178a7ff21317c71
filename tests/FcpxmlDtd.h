#pragma once

// Validation of whole FCPXML documents against the DTD of their version, with the
// program's own DTDs: the editor refuses documents that do not validate.

#include "xml/FCPXMLDtd.h"
#include "xml/XmlDocument.h"

using namespace Qt::StringLiterals;

namespace FcpxmlDtd {

/// Empty when the document validates against the DTD of its version; else why not.
inline QString problems(const QByteArray &bytes)
{
    const auto document = XmlDocument::fromBytes(bytes);
    if (!document)
        return u"not well-formed"_s;
    const QString version = document->rootElement().attributeValue("version");
    const FCPXMLDtd &dtd = FCPXMLDtd::forDocument(*document);
    if (dtd.version() != version)
        return u"no DTD for FCPXML version \"%1\""_s.arg(version);
    return dtd.checkDocument(*document);
}

} // namespace FcpxmlDtd
