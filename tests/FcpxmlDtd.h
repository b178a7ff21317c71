#pragma once

// Validation of FCPXML documents against the DTD of their version, with libxml2's
// validator: the editor refuses documents that do not validate.

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QString>

#include <cstdarg>

#include <libxml/parser.h>
#include <libxml/valid.h>

namespace FcpxmlDtd {

inline void collectMessage(void *messages, const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    *static_cast<QString *>(messages) += QString::vasprintf(format, arguments);
    va_end(arguments);
}

/// The DTD file of an FCPXML version ("1.8"); empty when there is none.
inline QString pathForVersion(const QString &version)
{
    const QDir dtds(QStringLiteral(CUEBRIDGE_DTD_DIR));
    for (const QString &name :
         {QStringLiteral("FCPXMLv%1.dtd").arg(QString(version).replace(u'.', u'_')),
          QStringLiteral("Final_Cut_Pro_XML_DTD_version_%1.dtd").arg(version)}) {
        if (dtds.exists(name))
            return dtds.filePath(name);
    }
    return QString();
}

/// Empty when the document validates against the DTD of its version; else why not.
inline QString problems(const QByteArray &document)
{
    static const QRegularExpression versionAttribute(
        QStringLiteral("<fcpxml[^>]*version=\"([0-9.]+)\""));
    const QString version = versionAttribute.match(QString::fromUtf8(document)).captured(1);
    const QString dtdPath = pathForVersion(version);
    if (dtdPath.isEmpty())
        return QStringLiteral("no DTD for FCPXML version \"%1\" in %2")
            .arg(version, QStringLiteral(CUEBRIDGE_DTD_DIR));

    QString messages;
    xmlDocPtr doc = xmlReadMemory(document.constData(), int(document.size()), nullptr, nullptr,
                                  XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
    xmlDtdPtr dtd = xmlParseDTD(
        nullptr, reinterpret_cast<const xmlChar *>(QFile::encodeName(dtdPath).constData()));
    xmlValidCtxtPtr context = xmlNewValidCtxt();
    bool valid = false;
    if (doc && dtd && context) {
        context->userData = &messages;
        context->error = collectMessage;
        context->warning = collectMessage;
        valid = xmlValidateDtd(context, doc, dtd) == 1;
    }
    xmlFreeValidCtxt(context);
    xmlFreeDtd(dtd);
    xmlFreeDoc(doc);
    if (valid)
        return QString();
    return messages.isEmpty() ? QStringLiteral("not valid against %1").arg(dtdPath) : messages;
}

} // namespace FcpxmlDtd
