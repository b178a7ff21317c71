#include "support/QFPropertyList.h"
#include "support/QFUserDefaults.h"

#include "QtPrinters.h"
#include "TempHome.h"

#include <gtest/gtest.h>

#include <QDateTime>

namespace {

QVariantMap sample()
{
    return {{"string", u"Zoë & co"_s},
            {"true", true},
            {"integer", qlonglong(-42)},
            {"real", 2.5},
            {"data", QByteArray("\x00\x01\xff", 3)},
            {"date", QDateTime(QDate(2014, 5, 1), QTime(14, 3, 22), Qt::UTC)},
            {"list", QVariantList{1, u"two"_s}},
            {"dict", QVariantMap{{"nested", u"yes"_s}}}};
}

TEST(PropertyList, EveryTypeSurvivesARoundTripInBothFormatsIntoAnExistingFolder)
{
    TempHome home;
    const QString path = home.path() + "/prefs.plist";
    for (const auto format : {QFPropertyList::Format::Xml, QFPropertyList::Format::Binary}) {
        ASSERT_TRUE(QFPropertyList::writeDictionary(sample(), path, format));
        const QVariantMap back = QFPropertyList::readDictionary(path);
        EXPECT_EQ(back, sample()) << int(format);
        EXPECT_EQ(back["true"].typeId(), QMetaType::Bool);
        EXPECT_EQ(back["data"].typeId(), QMetaType::QByteArray);
    }
    QString error;
    EXPECT_FALSE(QFPropertyList::writeDictionary(sample(), home.path() + "/no/such/x.plist",
                                                 QFPropertyList::Format::Xml, &error));
    EXPECT_FALSE(error.isEmpty()) << "a missing folder is not made";
}

TEST(PropertyList, MissingBrokenOrNonDictionaryFilesReadEmpty)
{
    TempHome home;
    EXPECT_TRUE(QFPropertyList::readDictionary(home.path() + "/missing.plist").isEmpty());
    EXPECT_TRUE(QFPropertyList::readDictionary(QString()).isEmpty());
    EXPECT_TRUE(QFPropertyList::readDictionary(home.path()).isEmpty()); // a folder
    for (const QByteArray &bytes :
         {QByteArray("<plist><dict><key>a</key>"), QByteArray(1000, '\xff'),
          QFPropertyList::toBytes(QVariantList{1, 2}, QFPropertyList::Format::Xml)})
        EXPECT_TRUE(QFPropertyList::readDictionary(home.file(u"x.plist"_s, bytes)).isEmpty());
}

TEST(UserDefaults, StoredValuesOverRegisteredDefaults)
{
    TempHome home;
    const QString ini = home.path() + "/defaults.ini";
    {
        QFUserDefaults defaults(ini);
        defaults.registerDefaults({{"stripWhitespace", 1}, {"offsetValue", 0}});
        EXPECT_TRUE(defaults.boolForKey("stripWhitespace"));
        EXPECT_FALSE(defaults.objectForKey("lastProject").isValid());
        defaults.setObject(u"/tmp/a.xml"_s, "lastProject");
        defaults.setObject(false, "stripWhitespace");
        defaults.synchronize();
    }
    QFUserDefaults reopened(ini);
    reopened.registerDefaults({{"stripWhitespace", 1}});
    EXPECT_FALSE(reopened.boolForKey("stripWhitespace"));
    EXPECT_EQ(reopened.stringForKey("lastProject"), "/tmp/a.xml");
    reopened.removeObjectForKey("stripWhitespace");
    EXPECT_TRUE(reopened.boolForKey("stripWhitespace"));
}

} // namespace
