// What the link knows of the installed and running editor without events of its own,
// and the clean-up and escaping of the XML it exchanges.

#include "fcp7link/QFAppleEvents.h"

#include "FCP7Console.h"
#include "support/QFException.h"
#include "support/QFFormat.h"
#include "support/QFLocalPaths.h"
#include "support/QFLog.h"
#include "support/QFPropertyList.h"
#include "support/QFWorkspace.h"
#include "time/QFNumberReader.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QUuid>

#include <algorithm>
#include <climits>
#include <stdexcept>

namespace {

int integerValue(const QString &text)
{
    return int(std::clamp<qint64>(QFNumberReader::leadingInteger(text), INT_MIN, INT_MAX));
}

} // namespace

bool QFAppleEvents::isFCPRunning()
{
    return QFWorkspace::shared().isApplicationRunning(finalCutProBundleIdentifier);
}

QString QFAppleEvents::finalCutProVersionString()
{
    const QDir applications(QFLocalPaths::applicationDirectory(false));
    QString application = QFWorkspace::shared().pathForApplication(finalCutProBundleIdentifier);
    if (application.isEmpty())
        application = applications.filePath(QStringLiteral("Final Cut Studio/Final Cut Pro.app"));
    if (!QFileInfo::exists(application))
        application = applications.filePath(QStringLiteral("Final Cut Pro.app"));

    QFile infoPlist(QDir(application).filePath(QStringLiteral("Contents/Info.plist")));
    if (infoPlist.open(QIODevice::ReadOnly)) {
        const QVariant info = QFPropertyList::fromBytes(infoPlist.readAll());
        if (info.typeId() == QMetaType::QVariantMap) {
            const QVariant version =
                info.toMap().value(QStringLiteral("CFBundleShortVersionString"));
            return version.isValid() ? version.toString() : QString();
        }
    }
    return QStringLiteral("7.0");
}

int QFAppleEvents::finalCutProMajorVersion()
{
    const QString version = finalCutProVersionString();
    if (version.isEmpty())
        return 7;
    return integerValue(version.left(1)); // the first character alone, by design
}

int QFAppleEvents::maximumXMEMLVersion()
{
    try {
        const QString version = finalCutProVersionString();
        if (version.isNull())
            return 1; // an absent version reads as 0.0.0
        QStringList components = version.split(u'.');
        // The padding stops after one addition for a one-component version, which then
        // has no patch component to read.
        for (int additions = 0; components.size() < 3 && additions < 3 - components.size();
             ++additions)
            components << QStringLiteral("0");
        auto component = [&components](qsizetype index) {
            if (index >= components.size())
                throw std::out_of_range(QFFormat::format(u"index %li beyond bounds [0 .. %li]",
                                                         index, components.size() - 1)
                                            .toStdString());
            return integerValue(components.at(index));
        };
        const int major = component(0);
        const int minor = component(1);
        const int patch = component(2);
        if (major < 5)
            return 1;
        if (major == 5)
            return minor == 1 && patch < 2 ? 2 : 3;
        return major == 6 ? 4 : 5;
    } catch (const std::exception &exception) {
        QFException::logException(exception, "+[QFAppleEvents maximumXMEMLVersion]");
    }
    return 0;
}

std::optional<QFSequenceList> QFAppleEvents::sequencesInProject(const QString &projectPath)
{
    const std::optional<QByteArray> data = finalCutProMajorVersion() < 7
                                               ? getProjectXMLData(projectPath, true)
                                               : getTOCData(projectPath, true);
    if (!data || data->isEmpty())
        return std::nullopt;
    QString error;
    std::shared_ptr<XmlDocument> document =
        XmlDocument::fromBytes(*data, XmlDocument::Parsing::Strict, &error);
    if (!document) {
        consoleMessage(QFFormat::format(u"Error: %@", error));
        return std::nullopt;
    }
    QList<XmlNode> sequences =
        document->node().nodesForXPath(QStringLiteral(".//sequence/name[1]/.."), &error);
    if (!error.isNull()) {
        consoleMessage(QFFormat::format(u"Error: %@", error));
        return std::nullopt;
    }
    return QFSequenceList{std::move(document), std::move(sequences)};
}

QString QFAppleEvents::generateUUID()
{
    return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
}

QByteArray QFAppleEvents::formatData(const QByteArray &data)
{
    if (!data.isEmpty() && data.back() == '\0')
        return data.chopped(1);
    return data;
}

QByteArray QFAppleEvents::escapeCharactersInXMLString(const QByteArray &utf8)
{
    const auto *bytes = reinterpret_cast<const unsigned char *>(utf8.constData());
    const qsizetype size = utf8.size();
    QByteArray escaped;
    qsizetype runStart = 0;
    for (qsizetype i = 0; i < size; ++i) {
        const unsigned char byte = bytes[i];
        if (byte < 0x80 && byte != '\r')
            continue;
        // U+0080 to U+009F (0xC2 0x80 to 0xC2 0x9F) stay as they are, like units below 160.
        if (byte == 0xc2 && i + 1 < size && bytes[i + 1] >= 0x80 && bytes[i + 1] < 0xa0) {
            ++i;
            continue;
        }
        char32_t codePoint = byte;
        qsizetype length = 1;
        if (byte >= 0x80) {
            length = byte >= 0xf0 ? 4 : byte >= 0xe0 ? 3 : 2;
            codePoint = byte & (0x7f >> length);
            bool wellFormed = byte >= 0xc2 && byte < 0xf5 && i + length <= size;
            for (qsizetype k = 1; wellFormed && k < length; ++k) {
                wellFormed = (bytes[i + k] & 0xc0) == 0x80;
                codePoint = codePoint << 6 | (bytes[i + k] & 0x3f);
            }
            // Overlong forms, surrogates and values past U+10FFFF are malformed too.
            wellFormed = wellFormed &&
                         codePoint >= (length == 3   ? 0x800u
                                       : length == 4 ? 0x10000u
                                                     : 0x80u) &&
                         (codePoint < 0xd800 || codePoint > 0xdfff) && codePoint <= 0x10ffff;
            if (!wellFormed)
                return escapeCharactersInXMLString(QString::fromUtf8(utf8)).toUtf8();
        }
        if (escaped.isNull())
            escaped.reserve(size + size / 8);
        escaped.append(utf8.constData() + runStart, i - runStart);
        escaped += "&#";
        escaped += QByteArray::number(quint32(codePoint));
        escaped += ';';
        i += length - 1;
        runStart = i + 1;
    }
    if (escaped.isNull())
        return utf8;
    escaped.append(utf8.constData() + runStart, size - runStart);
    return escaped;
}

QString QFAppleEvents::escapeCharactersInXMLString(const QString &text)
{
    // Whole documents pass through here: copy the runs between escaped units in one go.
    const QChar *units = text.constData();
    const qsizetype size = text.size();
    QString escaped;
    qsizetype runStart = 0;
    for (qsizetype i = 0; i < size; ++i) {
        const char16_t unit = units[i].unicode();
        if (unit < 160 && unit != 13)
            continue;
        if (escaped.isNull())
            escaped.reserve(size + size / 8);
        escaped.append(units + runStart, i - runStart);
        // XML has no reference to a surrogate: a pair is one reference to its code point.
        char32_t codePoint = unit;
        if (QChar::isHighSurrogate(unit) && i + 1 < size && units[i + 1].isLowSurrogate())
            codePoint = QChar::surrogateToUcs4(unit, units[++i].unicode());
        escaped += u"&#";
        escaped += QString::number(codePoint);
        escaped += u';';
        runStart = i + 1;
    }
    if (escaped.isNull())
        return text;
    escaped.append(units + runStart, size - runStart);
    return escaped;
}
