#include "import/UserTextEscaping.h"

#include "QtPrinters.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

struct EscapeCase
{
    QString input;
    bool strip;
    QString escaped;
};

TEST(EscapeUserInputForXML, EscapesOnceAndStripsOnRequest)
{
    const EscapeCase cases[] = {
        {u"Tom & Jerry’s <cut>"_s, true, u"Tom &amp; Jerry&apos;s &lt;cut&gt;"_s},
        {u"“quoted” ‘single’ \"plain\""_s, true,
         u"&quot;quoted&quot; &apos;single&apos; &quot;plain&quot;"_s},
        {u"A &amp; B &lt; C"_s, true, u"A &amp; B &amp;lt; C"_s},
        {u" \ttwo\r\nlines\t "_s, true, u"twolines"_s},
        {u" \ttwo\r\nlines\t "_s, false, u" \ttwolines\t "_s},
        {u"é"_s, true, u"é"_s},
    };
    for (const EscapeCase &c : cases)
        EXPECT_EQ(UserTextEscaping::escapeUserInputForXML(c.input, c.strip), c.escaped)
            << c.input.toStdString();
}

} // namespace
