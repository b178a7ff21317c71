#include "MarkerTableModel.h"

#include <QBrush>
#include <QColor>
#include <QPainter>
#include <QPixmap>
#include <QThreadPool>

#include <utility>

namespace {

/// The swatch of a colour name; the markers' colours are all named colours of the web.
QColor swatch(const QString &name)
{
    if (name.isEmpty())
        return QColor(Qt::red); // an empty colour gives a red marker
    QColor color = QColor::fromString(name.trimmed().toLower());
    return color.isValid() ? color : QColor(Qt::red);
}

} // namespace

void MarkerTableModel::setPreview(const MarkerPreview &preview)
{
    beginResetModel();
    MarkerPreview previous = std::exchange(m_preview, preview);
    endResetModel();
    // Freeing fifty thousand rows takes longer than a frame: not on the main thread.
    QThreadPool::globalInstance()->start(
        [previous = std::move(previous)]() mutable { previous = MarkerPreview(); });
}

int MarkerTableModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_preview.rows.size());
}

int MarkerTableModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant MarkerTableModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_preview.rows.size())
        return {};
    const MarkerPreview::Row &row = m_preview.rows.at(index.row());
    using State = MarkerPreview::Row::State;
    if (role == Qt::DecorationRole && index.column() == Colour && row.marker) {
        // Outlined, so that white shows on a white row.
        QPixmap square(12, 12);
        square.fill(swatch(row.marker->color));
        QPainter outline(&square);
        outline.setPen(QColor(0, 0, 0, 90));
        outline.drawRect(0, 0, 11, 11);
        return square;
    }
    if (role == Qt::ForegroundRole && index.column() == Status && row.state == State::Skipped)
        return QBrush(QColor(0xb0, 0x20, 0x20));
    if (role == Qt::ToolTipRole && index.column() == Status && !row.note.isEmpty())
        return row.note;
    if (role != Qt::DisplayRole)
        return {};
    const std::optional<MarkerRecord> &marker = row.marker;
    switch (Column(index.column())) {
    case Line:
        return row.line;
    case Name:
        return marker ? marker->name : QString();
    case Comment:
        return marker ? marker->comment : QString();
    case Start:
        return marker ? marker->start : QString();
    case Duration:
        return marker ? (marker->durationFrames
                             ? QStringLiteral("%1 frames").arg(*marker->durationFrames)
                             : marker->duration)
                      : QString();
    case Colour:
        return marker ? marker->color : QString();
    case Kind: {
        if (!marker)
            return QString();
        QString kind = MarkerRecord::kindName(marker->kind);
        kind[0] = kind[0].toUpper();
        return kind;
    }
    case Status:
        switch (row.state) {
        case State::Lands:
            return row.note.isEmpty() ? row.status
                                      : QString(row.status + QStringLiteral(" — ") + row.note);
        case State::Skipped:
            return QString(QStringLiteral("Skipped: ") + row.status);
        case State::NotChecked:
            return QStringLiteral("—");
        }
        break;
    case ColumnCount:
        break;
    }
    return {};
}

QVariant MarkerTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    static const char *const titles[] = {"Line",     "Name",   "Comment", "Start",
                                         "Duration", "Colour", "Kind",    "Where it lands"};
    return section >= 0 && section < ColumnCount ? QString::fromLatin1(titles[section])
                                                 : QVariant();
}
