#pragma once

// Loading the documents of tests/data and naming nodes readably in expectations.

#include "xml/XmlDocument.h"

#include <QStringList>

#include <gtest/gtest.h>

#include <memory>

using namespace Qt::StringLiterals;

inline std::unique_ptr<XmlDocument> loadTestDocument(const char *name)
{
    QString error;
    auto document =
        XmlDocument::fromFile(QStringLiteral(CUEBRIDGE_TEST_DATA "/") + QLatin1String(name),
                              XmlDocument::Parsing::Strict, &error);
    EXPECT_TRUE(document) << name << ": " << error.toStdString();
    return document;
}

/// "clip:Interview" for an element with a name or id attribute, "track" without,
/// "@name=value" for an attribute, "text:value" for text.
inline QString describe(const XmlNode &node)
{
    switch (node.kind()) {
    case XmlNode::Kind::None:
        return u"nil"_s;
    case XmlNode::Kind::Document:
        return u"document"_s;
    case XmlNode::Kind::Attribute:
        return u'@' + node.name() + u'=' + node.stringValue();
    case XmlNode::Kind::Text:
        return u"text:"_s + node.stringValue();
    case XmlNode::Kind::Element: {
        XmlNode label = node.attributeForName(u"name"_s);
        if (!label)
            label = node.attributeForName(u"value"_s);
        if (!label)
            label = node.attributeForName(u"id"_s);
        return label ? node.name() + u':' + label.stringValue() : node.name();
    }
    case XmlNode::Kind::Other:
        break;
    }
    return u"other"_s;
}

inline QStringList describe(const QList<XmlNode> &nodes)
{
    QStringList descriptions;
    for (const XmlNode &node : nodes)
        descriptions << describe(node);
    return descriptions;
}
