#pragma once

#include "xml/XmlNode.h"

#include <QHash>
#include <QMutex>
#include <QSet>
#include <QString>
#include <QStringList>

class XmlDocument;
struct _xmlDtd;

/// Apple's DTD of one FCPXML version, carried by the program as a resource: where
/// markers stand among an element's children, and the check of elements an import
/// changed. The editor refuses a whole document that breaks the DTD of its version.
class FCPXMLDtd
{
public:
    /// The DTD of a version ("1.11"); the newest one for a version none covers.
    static const FCPXMLDtd &forVersion(QStringView version);
    /// The DTD of the version the document's root element names.
    static const FCPXMLDtd &forDocument(const XmlDocument &document);
    /// The versions shipped, oldest first. Each DTD is parsed when first asked for.
    static QStringList versions();

    /// The version this DTD declares ("1.11").
    QString version() const { return m_version; }

    /// Where markers go among an element's children, as its content model orders them:
    /// `before` names every element placed ahead of markers, `after` everything in the
    /// markers' own group and behind it. Both are empty for an element that takes no
    /// markers.
    struct MarkerOrder
    {
        QSet<QString> before;
        QSet<QString> after;
    };
    const MarkerOrder &markerOrder(const QString &element) const;

    /// Checks each element's attributes and its children against its content model
    /// (not the children's own content): a null string when all fit, else the
    /// validator's message for the first that does not. The elements' documents are
    /// left as they were.
    QString checkElements(const QList<XmlNode> &elements) const;
    /// Checks a whole document the same way; a null string when it is valid.
    QString checkDocument(const XmlDocument &document) const;

    ~FCPXMLDtd();
    FCPXMLDtd(const FCPXMLDtd &) = delete;
    FCPXMLDtd &operator=(const FCPXMLDtd &) = delete;

private:
    explicit FCPXMLDtd(_xmlDtd *dtd);

    _xmlDtd *m_dtd;
    QString m_version;
    QHash<QString, MarkerOrder> m_markerOrders;
    /// The validator builds an element's content model on first use, inside the DTD.
    mutable QMutex m_validation;
};
