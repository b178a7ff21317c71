#pragma once

#include "xml/XmlNode.h"

#include "support/QFFileContents.h"

#include <QByteArray>
#include <QString>

#include <memory>
#include <vector>

class QIODevice;
class XmlErrors;

struct _xmlDoc;
struct _xmlXPathContext;

/// A parsed XML document, owning its tree. Parsing is always safe: no network, no
/// entity substitution, no external DTD, libxml2's size and depth limits on, and
/// whitespace-only text between elements dropped so that child indexes count only
/// real content and the pretty printer re-indents everything. A document and its
/// nodes are used by one thread at a time.
class XmlDocument
{
public:
    enum class Parsing
    {
        Strict,   ///< a document that is not well-formed is refused
        Repairing ///< the parser repairs what it can (mismatched tags and the like)
    };

    /// Parses bytes; nullptr with error set to a description when nothing usable came out.
    static std::unique_ptr<XmlDocument>
    fromBytes(const QByteArray &bytes, Parsing parsing = Parsing::Strict, QString *error = nullptr);
    /// Whether the bytes are a well-formed document, read as the strict parse reads
    /// them but without building a tree; error receives why not.
    static bool isWellFormed(const QByteArray &bytes, QString *error = nullptr);
    /// Reads and parses a file (never a compressed or remote one).
    static std::unique_ptr<XmlDocument>
    fromFile(const QString &path, Parsing parsing = Parsing::Strict, QString *error = nullptr);
    /// Parses what the open device gives, as it reads, so the bytes are never held
    /// whole; fingerprint, when given, receives the fingerprint of every byte read.
    static std::unique_ptr<XmlDocument>
    fromDevice(QIODevice &device, Parsing parsing = Parsing::Strict, QString *error = nullptr,
               QFFileContents::Fingerprint *fingerprint = nullptr);
    /// A free-standing element parsed from one XML fragment ("<marker .../>"): a
    /// document whose root element is that element, ready to be inserted elsewhere.
    static std::unique_ptr<XmlDocument> fromElementString(const QString &text,
                                                          QString *error = nullptr);

    ~XmlDocument();
    XmlDocument(const XmlDocument &) = delete;
    XmlDocument &operator=(const XmlDocument &) = delete;

    /// The document node: the context of queries that start with the root's name.
    XmlNode node() const;
    XmlNode rootElement() const;

    /// The whole document, indented, encoded in UTF-8; room is made for expectedSize
    /// bytes at once.
    QByteArray toPrettyXml(qsizetype expectedSize = 0) const;
    /// Writes toPrettyXml()'s bytes to the open device as they are made; false when the
    /// device refused them.
    bool writePrettyXml(QIODevice &device) const;

    /// Keeps the document for the rest of the process: a run about to exit spares the
    /// freeing of a large tree, which the end of the process does at once.
    static void leaveToExit(std::unique_ptr<XmlDocument> document);

    /// Whether the parse met no error, so needed no repair: the strict and the repairing
    /// parse of the same bytes then build the same tree.
    bool parsedCleanly() const { return m_parsedCleanly; }
    /// The document type declaration with its internal subset ("<!DOCTYPE xmeml [...]>"),
    /// which declares the entities the document may refer to; null when the document
    /// declares nothing in one.
    QString internalSubsetDeclaration() const;

private:
    explicit XmlDocument(_xmlDoc *doc);
    /// The parse's document, or nullptr with the error logged and set.
    static std::unique_ptr<XmlDocument> adopt(_xmlDoc *doc, const XmlErrors &errors,
                                              QString *error);
    friend class XmlNode;
    /// Keeps a detached subtree alive until the document goes, so handles into it stay valid.
    void keepDetached(_xmlNode *node);
    /// One evaluation context for all queries: making one registers every XPath
    /// function anew, which would cost more than most of the queries themselves.
    _xmlXPathContext *xpathContext();

    _xmlDoc *m_doc;
    bool m_parsedCleanly = false;
    _xmlXPathContext *m_xpathContext = nullptr;
    std::vector<_xmlNode *> m_detached;
};
