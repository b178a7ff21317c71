#include "MarkerList.h"

#include "import/QFFCP7MarkerListParser.h"

MarkerList MarkerList::fromText(const QString &text)
{
    MarkerList list;
    QList<QFMarkerRecord> records =
        QFFCP7MarkerListParser::parseMarkersFromText(text, &list.skipped);

    // Counted as the parser splits: at line feeds, else at carriage returns.
    QString clean = text;
    if (clean.contains(QChar(u'\0')))
        clean.remove(QChar(u'\0'));
    const char16_t separator = QFFCP7MarkerListParser::lineSeparator(clean);
    for (const QStringView line : QStringView(clean).tokenize(separator))
        if (!line.trimmed().isEmpty())
            ++list.linesWithText;
    list.recognised = clean.contains(u'\t');

    if (records.isEmpty())
        return list;
    const QFMarkerRecord header = records.takeFirst();
    // A list saved without its header would otherwise lose its first marker unnoticed.
    if (!header.joined && !header.lines.isEmpty() &&
        QFFCP7MarkerListParser::standsAlone(header.fields.join(u'\t')))
        list.skipped.append({header.lines.first(),
                             QStringLiteral("line %1 holds a marker, not a column header: skipped")
                                 .arg(header.lines.first())});
    else
        list.headerLines = header.lines;

    list.markers.reserve(records.size());
    for (QFMarkerRecord &record : records) {
        if (record.joined && record.fields.size() != 7) {
            const QString why = QStringLiteral("lines %1 to %2 join into %3 columns; a record "
                                               "spanning lines needs seven")
                                    .arg(record.lines.first())
                                    .arg(record.lines.last())
                                    .arg(record.fields.size());
            for (const qsizetype line : std::as_const(record.lines))
                list.skipped.append({line, why});
            continue;
        }
        MarkerRecord marker;
        marker.name = record.fields[2];
        marker.comment = record.fields[3];
        marker.start = record.fields[4];
        marker.duration = record.fields[5];
        marker.color = record.fields[6];
        const QString type = record.fields[1].simplified().toLower();
        if (type == u"chapter")
            marker.kind = MarkerRecord::Kind::Chapter;
        else if (type == u"to do" || type == u"todo" || type == u"to-do")
            marker.kind = MarkerRecord::Kind::ToDo;
        else if (type == u"done")
            marker.kind = MarkerRecord::Kind::Done;
        marker.lines = std::move(record.lines);
        marker.columns = record.fields.size();
        list.markers.append(std::move(marker));
    }
    return list;
}

ImportReport MarkerList::report() const
{
    ImportReport report;
    report.headerLines = headerLines;
    report.skipped = skipped;
    report.linesWithText = linesWithText;
    return report;
}

QString MarkerRecord::kindName(Kind kind)
{
    switch (kind) {
    case Kind::Chapter:
        return QStringLiteral("chapter");
    case Kind::ToDo:
        return QStringLiteral("to do");
    case Kind::Done:
        return QStringLiteral("done");
    case Kind::Standard:
        break;
    }
    return QStringLiteral("marker");
}
