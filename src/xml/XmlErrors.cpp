#include "XmlErrors.h"

#include <libxml/globals.h>
#include <libxml/parser.h>

#include <mutex>

XmlErrors::XmlErrors()
    : m_previous(xmlStructuredError), m_previousContext(xmlStructuredErrorContext)
{
    xmlSetStructuredErrorFunc(this, &XmlErrors::collect);
}

XmlErrors::~XmlErrors()
{
    xmlSetStructuredErrorFunc(m_previousContext, m_previous);
}

void XmlErrors::collect(void *self, xmlErrorPtr error)
{
    auto *errors = static_cast<XmlErrors *>(self);
    if (!error || errors->m_count++ > 0)
        return;
    QString message = error->message ? QString::fromUtf8(error->message).trimmed()
                                     : QStringLiteral("error %1").arg(error->code);
    if (error->domain == XML_FROM_XPATH && error->str1)
        message += QStringLiteral(" in \"%1\" at position %2")
                       .arg(QString::fromUtf8(error->str1))
                       .arg(error->int1);
    else if (error->line > 0)
        message = QStringLiteral("line %1: %2").arg(error->line).arg(message);
    errors->m_first = message;
}

void ensureLibxmlInitialised()
{
    static std::once_flag once;
    std::call_once(once, [] { xmlInitParser(); });
}
