#pragma once

#include "import/ImportSettings.h"

#include <QString>
#include <QStringList>

#include <optional>

/// The options of cuebridge-import, read from its arguments.
struct CommandLine
{
    QString markerList;
    QString target;
    bool list = false;
    /// Print the markers of an FCPX target as a marker list.
    bool printsMarkers = false;
    std::optional<QString> sequence;
    /// Print where each marker would land and write nothing.
    bool dryRun = false;
    qint64 offset = 0;
    OffsetUnit unit = OffsetUnit::Frames;
    bool clear = false;
    bool todo = false;
    std::optional<QString> output;
    /// The marker list's encoding; empty: detected.
    QByteArray encoding;
    bool open = false;
    bool quiet = false;

    /// Help was asked for (helpText()).
    bool help = false;
    /// A usage error when not empty.
    QString error;

    static CommandLine parse(const QStringList &arguments);
    /// What must hold before anything is read: the paths usable, the options fitting
    /// the target. Empty when all is well, else what is wrong.
    QString checkPaths() const;
    static QString helpText();
};
