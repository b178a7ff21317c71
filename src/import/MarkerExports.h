#pragma once

#include "import/MarkerList.h"

#include <QList>
#include <QString>

#include <optional>

/// The marker exports of other editors, recognised by their content and turned into a
/// marker list of our own format, which the import procedures then read as always.
namespace MarkerExports {

enum class Source
{
    MarkerList,     ///< our own format, and anything not recognised as another
    Avid,           ///< Media Composer: User, Timecode, Track, Colour, Comment, Duration (frames)
    Premiere,       ///< Premiere Pro: Marker Name, Description, In, Out, Duration, Marker Type
    PremiereAssets, ///< Premiere Pro's other export: Asset Name, In Point, Description, the
                    ///< cells separated by runs of tabs
    ResolveEdl,     ///< Resolve's timeline marker EDL: event lines, each with a "|M:" line
    Audition,       ///< Audition: Name, Start, Duration, Time Format, Type, Description
    SubRip,         ///< subtitles: numbered cues "00:00:02,000 --> 00:00:04,500", then text
    WebVtt,         ///< subtitles: "WEBVTT", then cues "00:02.000 --> 00:04.500", then text
    Chapters        ///< a chapter list as video sites take it: "1:02:03 Credits", a line each
};

/// What the text is, by its first lines.
Source recognise(const QString &text);
/// The source as the log and the terminal name it.
QString sourceName(Source source);

/// The markers of the text read as the source: another editor's export line by line
/// (its header lines as the header, every other line with text a marker or skipped),
/// or our own format.
MarkerList read(const QString &text, Source source);

/// The markers on the main storyline of a Final Cut Pro X file or bundle as a marker
/// list of our format, to be imported elsewhere: each at its timeline timecode, with
/// the marker's text as its name. Nothing when the document cannot be read or holds
/// no such marker.
std::optional<QString> markerListOfFCPXDocument(const QString &path);

} // namespace MarkerExports
