#include "ImportReport.h"

#include <QSet>

#include <algorithm>
#include <map>

namespace {

/// How many skipped lines an alert names before it says how many more there are.
constexpr qsizetype linesNamed = 5;

} // namespace

void ImportReport::skip(const QList<qsizetype> &lines, const QString &why)
{
    for (const qsizetype line : lines)
        skipped.append({line, why});
}

bool ImportReport::accountsForEveryLine() const
{
    QSet<qsizetype> seen;
    qsizetype count = 0;
    const auto add = [&](qsizetype line) {
        seen.insert(line);
        ++count;
    };
    for (const qsizetype line : headerLines)
        add(line);
    for (const Marker &marker : written)
        for (const qsizetype line : marker.lines)
            add(line);
    for (const SkippedLine &line : skipped)
        add(line.line);
    return count == seen.size() && count == linesWithText;
}

QStringList ImportReport::lineTexts() const
{
    std::multimap<qsizetype, QString> byLine;
    for (const SkippedLine &line : skipped)
        byLine.emplace(line.line, line.why);
    for (const Marker &marker : written)
        if (!marker.note.isEmpty() && !marker.lines.isEmpty())
            byLine.emplace(marker.lines.first(), marker.note);
    QStringList texts;
    for (const auto &[line, text] : byLine)
        texts << QStringLiteral("Line %1: %2").arg(line).arg(text);
    return texts;
}

QString ImportReport::summary() const
{
    QList<SkippedLine> sorted = skipped;
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const SkippedLine &a, const SkippedLine &b) { return a.line < b.line; });
    QString text =
        QStringLiteral("%1 %2 imported, %3 %4 skipped:")
            .arg(written.size())
            .arg(written.size() == 1 ? QStringLiteral("marker") : QStringLiteral("markers"))
            .arg(sorted.size())
            .arg(sorted.size() == 1 ? QStringLiteral("line") : QStringLiteral("lines"));
    for (qsizetype i = 0; i < std::min(linesNamed, sorted.size()); ++i)
        text += QStringLiteral("\nLine %1: %2").arg(sorted[i].line).arg(sorted[i].why);
    if (sorted.size() > linesNamed)
        text += QStringLiteral("\n… and %1 more.").arg(sorted.size() - linesNamed);
    return text;
}
