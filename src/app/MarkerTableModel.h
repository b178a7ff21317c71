#pragma once

#include "import/MarkerPreview.h"

#include <QAbstractTableModel>

/// The rows of a marker preview for the window's table: line, name, comment, start,
/// duration, colour (with a swatch), kind, and where the marker lands or why it is
/// skipped.
class MarkerTableModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column
    {
        Line,
        Name,
        Comment,
        Start,
        Duration,
        Colour,
        Kind,
        Status,
        ColumnCount
    };

    using QAbstractTableModel::QAbstractTableModel;

    void setPreview(const MarkerPreview &preview);
    const MarkerPreview &preview() const { return m_preview; }

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

private:
    MarkerPreview m_preview;
};
