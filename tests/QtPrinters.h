#pragma once

// Readable GoogleTest failure messages for Qt values.

#include <QString>
#include <QStringList>

#include <ostream>

using namespace Qt::StringLiterals;

inline void PrintTo(const QString &value, std::ostream *os)
{
    if (value.isNull())
        *os << "(null QString)";
    else
        *os << '"' << value.toStdString() << '"';
}

inline void PrintTo(const QStringList &value, std::ostream *os)
{
    *os << '[';
    for (qsizetype i = 0; i < value.size(); ++i) {
        if (i > 0)
            *os << ", ";
        PrintTo(value[i], os);
    }
    *os << ']';
}
