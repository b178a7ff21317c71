#pragma once

#include <QString>
#include <QVariant>

#include <initializer_list>
#include <type_traits>

/// printf-style formatting of the system's own formats, so that log lines and
/// messages keep their exact texts: "%@" takes a string, "%s" a C string or string,
/// "%C" a UTF-16 unit, and the integer and floating conversions (d i u x X o c f F e E
/// g G with flags, width and precision, "%0.2li", "%0.2f") print as C's printf does
/// in the C locale. "%%" is a percent sign. Length modifiers are accepted and
/// ignored: the argument's own type decides. A directive without an argument, or
/// an unknown one, is copied as it stands.
namespace QFFormat {

/// One argument of a format; built implicitly from the usual value types.
class Arg
{
public:
    Arg(const QString &value) : m_kind(Kind::String), m_string(value) {}
    Arg(QStringView value) : m_kind(Kind::String), m_string(value.toString()) {}
    // Without this a u"..." literal would decay to a pointer and print as an address.
    Arg(const char16_t *value)
        : m_kind(Kind::String), m_string(value ? QStringView(value).toString() : QString())
    {}
    Arg(const char *value)
        : m_kind(Kind::String), m_string(value ? QString::fromUtf8(value) : QString())
    {}
    Arg(const QByteArray &value) : m_kind(Kind::String), m_string(QString::fromUtf8(value)) {}
    Arg(QChar value) : m_kind(Kind::Unsigned), m_unsigned(value.unicode()) {}
    Arg(bool value) : m_kind(Kind::Signed), m_signed(value ? 1 : 0) {}
    Arg(double value) : m_kind(Kind::Double), m_double(value) {}
    Arg(float value) : m_kind(Kind::Double), m_double(value) {}
    Arg(const void *value) : m_kind(Kind::Pointer), m_pointer(value) {}
    template<typename T>
    requires(std::is_integral_v<T> && !std::is_same_v<T, bool>) Arg(T value)
    {
        if constexpr (std::is_signed_v<T>) {
            m_kind = Kind::Signed;
            m_signed = qint64(value);
        } else {
            m_kind = Kind::Unsigned;
            m_unsigned = quint64(value);
        }
    }

    enum class Kind
    {
        Signed,
        Unsigned,
        Double,
        String,
        Pointer
    };
    Kind kind() const { return m_kind; }
    qint64 asSigned() const;
    quint64 asUnsigned() const;
    double asDouble() const;
    QString asString() const;
    const void *asPointer() const { return m_pointer; }

private:
    Kind m_kind = Kind::Signed;
    qint64 m_signed = 0;
    quint64 m_unsigned = 0;
    double m_double = 0.0;
    QString m_string;
    const void *m_pointer = nullptr;
};

/// Formats with a list of arguments.
QString formatList(QStringView format, std::initializer_list<Arg> args);

/// Formats with the arguments in order: format("Marker start pos: %li", in).
template<typename... Args> QString format(QStringView format, const Args &...args)
{
    return formatList(format, {Arg(args)...});
}

} // namespace QFFormat
