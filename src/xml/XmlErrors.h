#pragma once

#include <QString>

#include <libxml/xmlerror.h>

/// Collects the errors libxml2 raises on this thread while it lives, instead of
/// letting libxml2 print them, and restores the previous handler afterwards.
class XmlErrors
{
public:
    XmlErrors();
    ~XmlErrors();
    XmlErrors(const XmlErrors &) = delete;
    XmlErrors &operator=(const XmlErrors &) = delete;

    bool any() const { return m_count > 0; }
    /// The first error, as "line N: message" for documents or the message alone.
    QString description() const { return m_first; }

private:
    static void collect(void *self, xmlErrorPtr error);

    xmlStructuredErrorFunc m_previous;
    void *m_previousContext;
    QString m_first;
    int m_count = 0;
};

/// Makes sure libxml2 is initialised once, before the first parse from any thread.
void ensureLibxmlInitialised();
