#include "MarkerListText.h"
#include "TextEncoding.h"

#include "import/QFFCP7MarkerListParser.h"

#include "support/QFFileContents.h"
#include "support/QFLog.h"

#include <QFileInfo>

#include <optional>

namespace MarkerListText {

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

/// The file's text in the encoding, or a null string with error set when its bytes are
/// not valid in that encoding.
QString decode(const QByteArray &bytes, const QByteArray &encoding, const QString &path,
               QFError *error)
{
    bool valid = false;
    const QString text = TextEncoding::decode(bytes, encoding, &valid);
    const bool oddUtf16 = encoding.startsWith("UTF-16") && bytes.size() % 2 != 0;
    if (!valid || oddUtf16) {
        *error = QFError::make(
            QStringLiteral("QFFileContents"), 261, QStringLiteral("NSLocalizedDescription"),
            QStringLiteral("The file “%1” couldn’t be read in the %2 text encoding.")
                .arg(QFileInfo(path).fileName(), QString::fromLatin1(encoding)));
        return QString();
    }
    return text; // an empty file is an empty text, not a failed read
}

} // namespace

qsizetype lineCount(const QString &text)
{
    if (text.isNull())
        return 0;
    return text.count(QChar(QFFCP7MarkerListParser::lineSeparator(text))) + 1;
}

Prepared prepare(const QString &path, const QByteArray &encodingAskedFor)
{
    Prepared prepared;
    prepared.path = path;
    prepared.encodingAskedFor = encodingAskedFor;
    using Step = Prepared::Step;
    const bool logging = !QFLog::sharedController().loggingDisabled();
    const auto log = [&](QStringView format, std::initializer_list<QFFormat::Arg> args) {
        if (logging)
            prepared.steps.append({Step::Log, QFLog::formatEntry(format, args), {}});
    };
    // A failed read is reported by every step that reads the text, as before.
    QFError readError;
    const std::optional<QByteArray> bytes = readMarkerList(path, &readError);
    if (bytes) {
        prepared.fingerprint.emplace();
        prepared.fingerprint->add(bytes->constData(), bytes->size());
    }
    QFError error;
    const auto reportTo = [&](Step::Kind failure) {
        if (!error.domain.isEmpty())
            prepared.steps.append({failure, QString(), error});
        error = QFError();
    };
    const auto textIn = [&](const QByteArray &encoding) {
        if (bytes)
            return decode(*bytes, encoding, path, &error);
        error = readError;
        return QString();
    };
    std::optional<QByteArray> encoding;
    QString why = QStringLiteral("asked for");
    if (!bytes)
        error = readError;
    else if (!encodingAskedFor.isEmpty())
        encoding = encodingAskedFor;
    else
        encoding = TextEncoding::detect(*bytes, &why);
    if (bytes)
        log(u"Marker list encoding: %@ (%@)",
            {QString::fromLatin1(encoding.value_or(TextEncoding::utf16LE)),
             encoding ? why : QStringLiteral("no reading stood out: UTF-16 assumed")});
    reportTo(Step::OtherFailed);
    ImportText &read = prepared.read;
    read.text = textIn(encoding.value_or(TextEncoding::utf16LE));
    reportTo(Step::ReadFailed);
    log(u"Marker text: %@", {read.text});
    read.lineCount = lineCount(read.text);
    read.encoding = QString::fromLatin1(encoding.value_or(TextEncoding::utf16LE));
    if (read.lineCount < 2) {
        read.encoding = QString::fromLatin1(TextEncoding::utf8);
        read.text = textIn(TextEncoding::utf8);
        reportTo(Step::OtherFailed);
        log(u"UTF-8 Marker text: %@", {read.text});
        read.lineCount = lineCount(read.text);
    }
    const MarkerExports::Source source = MarkerExports::recognise(read.text);
    if (source != MarkerExports::Source::MarkerList)
        log(u"Reading a %@", {MarkerExports::sourceName(source)});
    read.list = MarkerExports::read(read.text, source);
    if (source != MarkerExports::Source::MarkerList)
        read.source = MarkerExports::sourceName(source);
    for (const SkippedLine &line : std::as_const(read.list.skipped))
        log(u"Line %li skipped: %@", {qint64(line.line), line.why});
    return prepared;
}

ImportText readForImport(const QString &path, const ReadFailure &readFailed,
                         const ReadFailure &otherFailed, const QByteArray &encodingAskedFor,
                         const Prepared *ahead)
{
    // A read made ahead serves while the file still holds the bytes it read.
    const bool aheadHolds = ahead && ahead->path == path &&
                            ahead->encodingAskedFor == encodingAskedFor && ahead->fingerprint &&
                            QFFileContents::fingerprint(path) == ahead->fingerprint;
    const Prepared prepared = aheadHolds ? *ahead : prepare(path, encodingAskedFor);
    for (const Prepared::Step &step : prepared.steps) {
        if (step.kind == Prepared::Step::Log)
            QFLog::appendLog(u"%@", step.entry);
        else if (const ReadFailure &failed =
                     step.kind == Prepared::Step::ReadFailed ? readFailed : otherFailed)
            failed(step.error);
    }
    return prepared.read;
}

ImportOutcome unreadable(bool recognised)
{
    QFLog::appendLog(u"Error: unable to load marker list");
    return ImportOutcome::failed(
        QStringLiteral("Unable to read marker list"),
        recognised ? QStringLiteral("The file may be corrupt, empty or in an invalid format.")
                   : QStringLiteral("The file is none of the forms read here: a tab-separated "
                                    "marker list (name, comment, start, duration, colour), a "
                                    "marker export of Media Composer, Premiere Pro, Resolve or "
                                    "Audition, SubRip or WebVTT subtitles, or a chapter list."));
}

std::optional<ImportOutcome> endWithoutMarkers(const ImportText &read)
{
    if (!read.list.markers.isEmpty())
        return std::nullopt;
    if (read.list.skipped.isEmpty())
        return ImportOutcome(); // a header alone, or nothing at all
    if (!read.list.recognised)
        return unreadable(false);
    return std::nullopt;
}

} // namespace MarkerListText
