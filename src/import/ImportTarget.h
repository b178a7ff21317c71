#pragma once

#include <QString>

/// What the chosen target is, as adopting it, discovering its sequences and choosing an
/// item decide. The session keeps it; each run works on a copy.
struct TargetKind
{
    /// An FCPXML file or bundle.
    bool isFCPX = false;
    /// A file on disk; false means a project open in Final Cut Pro 7.
    bool isXMLFile = false;
    /// An XMEML file with a bare sequence and no project.
    bool isSequenceOnly = false;
    /// The FCPX selection is an event clip rather than a project.
    bool isEvent = false;
};

/// The kinds of target, told apart by the file extension alone (in any case).
enum class TargetFormat
{
    FCP7Project, ///< any other extension: a project reached through Final Cut Pro 7
    XMEMLFile,   ///< ".xml"
    FCPXFile,    ///< ".fcpxml"
    FCPXBundle   ///< ".fcpxmld"
};
TargetFormat targetFormatForPath(const QString &path);

/// One entry of the sequence menu: a title and what it stands for (a sequence uuid
/// for Final Cut Pro 7, an element's XPath for FCPX).
struct SequenceItem
{
    enum class Image
    {
        None,
        Sequence,
        FCPXEvent
    };

    QString title;
    QString representedObject;
    Image image = Image::None;

    friend bool operator==(const SequenceItem &, const SequenceItem &) = default;
};
