#include "support/QFFileContents.h"

#include "TempHome.h"

#include <gtest/gtest.h>

#include <QRandomGenerator>

namespace {

QFFileContents::Fingerprint inPieces(const QByteArray &bytes, qsizetype piece)
{
    QFFileContents::Fingerprint fingerprint;
    for (qsizetype at = 0; at < bytes.size(); at += piece)
        fingerprint.add(bytes.constData() + at, std::min(piece, bytes.size() - at));
    return fingerprint;
}

// Discovery and the import read a file in pieces of different sizes: the same bytes must
// give the same fingerprint however they come, and any change a different one.
TEST(Fingerprint, DependsOnTheBytesNotOnHowTheyWereRead)
{
    QByteArray bytes(3 * QFFileContents::Fingerprint::blockSize + 123, 'x');
    QRandomGenerator(5).fillRange(reinterpret_cast<quint32 *>(bytes.data()), bytes.size() / 4);
    const QFFileContents::Fingerprint whole = inPieces(bytes, bytes.size());
    for (const qsizetype piece : {1, 4000, 65535, 65536, 100000})
        EXPECT_TRUE(inPieces(bytes, piece) == whole) << piece;

    TempHome home;
    EXPECT_TRUE(QFFileContents::fingerprint(home.file(u"f"_s, bytes)) == whole);
    QByteArray changed = bytes;
    changed[70000] = char(changed[70000] ^ 1);
    for (const QByteArray &other : {changed, bytes.chopped(1), bytes + '\0'})
        EXPECT_FALSE(inPieces(other, 4000) == whole);
    EXPECT_FALSE(QFFileContents::fingerprint(home.filePath(u"missing"_s)));
}

} // namespace
