#include "MarkerListText.h"

#include "diagnostics/QFLog.h"
#include "support/QFFileContents.h"

#include <QFileInfo>

namespace MarkerListText {

std::optional<QStringConverter::Encoding> detectEncoding(const QByteArray &bytes)
{
    if (const auto fromBom = QStringConverter::encodingForData(bytes))
        return fromBom;
    // Stateless, so that a sequence cut off at the end counts as an error.
    QStringDecoder utf8(QStringConverter::Utf8, QStringConverter::Flag::Stateless);
    const QString text = utf8.decode(bytes);
    if (utf8.hasError())
        return std::nullopt;
    return QStringConverter::Utf8;
}

QString decode(const QByteArray &bytes, QStringConverter::Encoding encoding)
{
    QStringDecoder decoder(encoding, QStringConverter::Flag::Stateless);
    return decoder.decode(bytes);
}

namespace {

std::optional<QByteArray> readMarkerList(const QString &path, QFError *error)
{
    const QFileInfo info(path);
    if (info.isFile() && info.size() > maximumFileSize) {
        if (error)
            *error = QFError::make(
                QStringLiteral("QFFileContents"), 27, QStringLiteral("NSLocalizedDescription"),
                QStringLiteral("The file “%1” is %2 MB; marker lists are read up to %3 MB.")
                    .arg(info.fileName())
                    .arg(info.size() / (1024 * 1024))
                    .arg(maximumFileSize / (1024 * 1024)));
        return std::nullopt;
    }
    return QFFileContents::read(path, error);
}

} // namespace

std::optional<QStringConverter::Encoding> detectFileEncoding(const QString &path, QFError *error)
{
    const auto bytes = readMarkerList(path, error);
    return bytes ? detectEncoding(*bytes) : std::nullopt;
}

QString readFile(const QString &path, QStringConverter::Encoding encoding, QFError *error)
{
    const auto bytes = readMarkerList(path, error);
    if (!bytes)
        return QString();
    QStringDecoder decoder(encoding, QStringConverter::Flag::Stateless);
    QString text = decoder.decode(*bytes);
    const bool oddUtf16 =
        (encoding == QStringConverter::Utf16LE || encoding == QStringConverter::Utf16BE ||
         encoding == QStringConverter::Utf16) &&
        bytes->size() % 2 != 0;
    if (decoder.hasError() || oddUtf16) {
        if (error) {
            *error = QFError::make(
                QStringLiteral("QFFileContents"), 261, QStringLiteral("NSLocalizedDescription"),
                QStringLiteral("The file “%1” couldn’t be read in the %2 text encoding.")
                    .arg(QFileInfo(path).fileName(),
                         QLatin1StringView(QStringConverter::nameForEncoding(encoding))));
        }
        return QString();
    }
    if (text.isNull())
        text = QStringLiteral(""); // an empty file is an empty text, not a failed read
    return text;
}

QStringList splitLines(const QString &text)
{
    if (text.isNull())
        return {};
    QStringList lines = text.split(u'\n');
    if (lines.size() < 2)
        lines = text.split(u'\r');
    return lines;
}

ImportText readForImport(const QString &path, const ReadFailure &readFailed,
                         const ReadFailure &otherFailed)
{
    QFError error;
    const auto reportTo = [&error](const ReadFailure &failed) {
        if (!error.domain.isEmpty() && failed)
            failed(error);
        error = QFError();
    };
    const auto encoding = detectFileEncoding(path, &error);
    reportTo(otherFailed);
    ImportText read;
    read.text = readFile(path, encoding.value_or(QStringConverter::Utf16LE), &error);
    reportTo(readFailed);
    QFLog::appendLog(u"Marker text: %@", read.text);
    read.lineCount = splitLines(read.text).size();
    if (read.lineCount < 2) {
        read.text = readFile(path, QStringConverter::Utf8, &error);
        reportTo(otherFailed);
        QFLog::appendLog(u"UTF-8 Marker text: %@", read.text);
        read.lineCount = splitLines(read.text).size();
    }
    return read;
}

ImportOutcome unreadable()
{
    QFLog::appendLog(u"Error: unable to load marker list");
    return ImportOutcome::failed(
        QStringLiteral("Unable to read marker list"),
        QStringLiteral("The file may be corrupt, empty or in an invalid format."));
}

} // namespace MarkerListText
