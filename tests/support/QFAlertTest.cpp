#include "support/QFAlert.h"

#include <gtest/gtest.h>

#include <QList>
#include <QMutex>

#include <atomic>
#include <chrono>
#include <thread>

using namespace Qt::StringLiterals;

namespace {

using namespace std::chrono_literals;

/// Shows nothing: records what it was asked to show and answers when the test says.
class RecordingPresenter : public QFAlertPresenter
{
public:
    RecordingPresenter() { QFAlert::setPresenter(this); }
    ~RecordingPresenter() override { QFAlert::setPresenter(nullptr); }

    bool hasSheet(QObject *window) const override { return window == windowWithSheet; }
    QObject *show(const Content &content, QObject *window,
                  std::function<void(qint64)> answered) override
    {
        QMutexLocker lock(&mutex);
        shown.append(content);
        windows.append(window);
        pending = std::move(answered);
        if (answerAtOnce)
            pending(*answerAtOnce);
        return nullptr;
    }
    void close(QObject *) override {}

    /// The user presses a button of the alert shown last.
    void answer(qint64 code)
    {
        QMutexLocker lock(&mutex);
        pending(code);
    }
    qsizetype shownCount()
    {
        QMutexLocker lock(&mutex);
        return shown.size();
    }

    QMutex mutex;
    QList<Content> shown;
    QList<QObject *> windows;
    std::function<void(qint64)> pending;
    std::optional<qint64> answerAtOnce = QFAlert::alternateReturn;
    QObject *windowWithSheet = nullptr;
};

class Delegate : public QObject
{
    Q_OBJECT
public:
    Q_INVOKABLE void sheetEnded(qint64 code) { ended = code; }
    std::optional<qint64> ended;
};

TEST(Alert, EachFormShowsItsTextsAndGivesTheButtonsCode)
{
    RecordingPresenter presenter;
    EXPECT_EQ(QFAlert::alertSheetWithMessageText(u"Done"_s, u"50%% of %@"_s, nullptr),
              QFAlert::alternateReturn);
    // Only the full form passes a "do not wait" on; this one waits all the same.
    EXPECT_EQ(QFAlert::alertSheetWithMessageText(u"Ask"_s, u"Yes"_s, u"No"_s, QString(), u"info"_s,
                                                 nullptr, false),
              QFAlert::alternateReturn);
    ASSERT_EQ(presenter.shown.size(), 2);
    // The informative text is a format of its own: "%%" becomes one per-cent sign.
    EXPECT_EQ(presenter.shown[0].informativeText, u"50% of %@"_s);
    EXPECT_TRUE(presenter.shown[0].defaultButtonTitle.isNull());
    EXPECT_EQ(presenter.shown[1].defaultButtonTitle, u"Yes"_s);
    EXPECT_EQ(presenter.shown[1].alternateButtonTitle, u"No"_s);
    EXPECT_TRUE(presenter.shown[1].otherButtonTitle.isNull());

    Delegate delegate;
    QFAlert alert;
    EXPECT_EQ(QFAlert::alertSheetWithMessageText(u"m"_s, QString(), QString(), QString(), QString(),
                                                 nullptr, &delegate, "sheetEnded", false, &alert,
                                                 u"dontAskAgain"_s),
              QFAlert::notWaited);
    EXPECT_EQ(delegate.ended, QFAlert::alternateReturn);
    EXPECT_EQ(presenter.shown.last().suppressionBinding, u"dontAskAgain"_s);
}

TEST(Alert, AWaitingCallReturnsOnlyOnceAnsweredAndAWindowWithASheetIsLeftOut)
{
    RecordingPresenter presenter;
    presenter.answerAtOnce.reset();
    QObject window;
    presenter.windowWithSheet = &window;
    std::atomic<qint64> code = 99;
    std::thread caller([&] { code = QFAlert::alertSheetWithMessageText(u"m"_s, u"i"_s, &window); });
    while (presenter.shownCount() == 0)
        std::this_thread::sleep_for(1ms);
    std::this_thread::sleep_for(300ms);
    EXPECT_EQ(code, 99) << "returned before the user answered";
    presenter.answer(QFAlert::otherReturn);
    caller.join();
    EXPECT_EQ(code, QFAlert::otherReturn);
    EXPECT_EQ(presenter.windows.value(0), nullptr);
}

} // namespace

#include "QFAlertTest.moc"
