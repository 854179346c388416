#include "gui/editor/ScriptQueue.h"

#include <QSignalSpy>
#include <QTest>
#include <QWebEnginePage>
#include <QWebEngineScript>
#include <QWebEngineView>
#include <gtest/gtest.h>

#include <memory>
#include <optional>

using namespace quillora::gui;

namespace {

constexpr int kWaitMs = 20000;

class ScriptQueueTest : public testing::Test {
protected:
    void SetUp() override {
        view.resize(400, 300);
        view.show();
        QSignalSpy loaded(view.page(), &QWebEnginePage::loadFinished);
        view.setHtml(QStringLiteral("<body contenteditable>one two</body>"));
        ASSERT_TRUE(loaded.wait(kWaitMs));
        ASSERT_TRUE(loaded.first().first().toBool());
    }

    // A script sent straight to the page, around the queue. The engine answers scripts in the
    // order they were sent, so everything the queue sent before has been answered too.
    QVariant evaluate(const QString& script) {
        auto result = std::make_shared<std::optional<QVariant>>();
        view.page()->runJavaScript(script, QWebEngineScript::ApplicationWorld,
                                   [result](const QVariant& v) { *result = v; });
        EXPECT_TRUE(QTest::qWaitFor([&] { return result->has_value(); }, kWaitMs))
            << script.toStdString();
        return result->value_or(QVariant());
    }

    QWebEngineView view;
};

TEST_F(ScriptQueueTest, ScriptsWaitForStartThenRunInOrder) {
    ScriptQueue queue(view.page());
    auto answers = std::make_shared<QVariantList>();
    auto insideCallback = std::make_shared<bool>(false);
    queue.enqueue(QStringLiteral("window.log = (window.log || []).concat('a'); 1"),
                  [answers](const QVariant& v) { answers->append(v); });
    queue.enqueue(QStringLiteral("window.log.push('b'); 2"),
                  [answers, insideCallback](const QVariant& v) {
                      answers->append(v);
                      *insideCallback = ScriptQueue::insideCallback();
                  });
    EXPECT_EQ(evaluate(QStringLiteral("String(window.log)")), QStringLiteral("undefined"));
    EXPECT_TRUE(answers->isEmpty());

    queue.start(QStringLiteral("window.log = ['first']"));
    ASSERT_TRUE(QTest::qWaitFor([&] { return answers->size() == 2; }, kWaitMs));
    EXPECT_EQ(*answers, QVariantList({1, 2}));
    EXPECT_EQ(evaluate(QStringLiteral("String(window.log)")), QStringLiteral("first,a,b"));
    EXPECT_TRUE(*insideCallback);
    EXPECT_FALSE(ScriptQueue::insideCallback());
}

TEST_F(ScriptQueueTest, CancelDropsWhatIsQueuedAndSilencesWhatWasSent) {
    ScriptQueue queue(view.page());
    auto calls = std::make_shared<int>(0);
    const auto count = [calls](const QVariant&) { ++*calls; };
    queue.enqueue(QStringLiteral("window.queued = 1"), count);
    queue.cancel();
    queue.start();
    queue.enqueue(QStringLiteral("window.sent = 1"), count);
    queue.cancel(); // before the page can have answered
    EXPECT_EQ(evaluate(QStringLiteral("String(window.queued) + ',' + window.sent")),
              QStringLiteral("undefined,1"));
    EXPECT_EQ(*calls, 0);

    // Started again, the queue works as before.
    queue.start();
    queue.enqueue(QStringLiteral("3"), count);
    EXPECT_TRUE(QTest::qWaitFor([&] { return *calls == 1; }, kWaitMs));
}

TEST_F(ScriptQueueTest, NoCallbackAfterTheQueueIsGone) {
    auto queue = std::make_unique<ScriptQueue>(view.page());
    auto called = std::make_shared<bool>(false);
    queue->start();
    queue->enqueue(QStringLiteral("window.sent = 1"),
                   [called](const QVariant&) { *called = true; });
    queue.reset();
    EXPECT_EQ(evaluate(QStringLiteral("window.sent")), 1);
    EXPECT_FALSE(*called);
}

TEST_F(ScriptQueueTest, AnActionKeepsItsPlaceBetweenScripts) {
    ScriptQueue queue(view.page());
    queue.start();
    queue.enqueue(QStringLiteral("getSelection().collapse(document.body.firstChild, 0)"));
    // The arming runs after the script before the action and before the action itself.
    queue.enqueueAction(QWebEnginePage::SelectAll, [](int token) {
        return QStringLiteral("window.armed = [%1, String(getSelection())]").arg(token);
    });
    auto seen = std::make_shared<std::optional<QString>>();
    queue.enqueue(QStringLiteral("String(getSelection())"),
                  [seen](const QVariant& v) { *seen = v.toString(); });
    ASSERT_TRUE(QTest::qWaitFor([&] { return seen->has_value(); }, kWaitMs));
    EXPECT_EQ(**seen, QStringLiteral("one two"));
    const QVariantList armed = evaluate(QStringLiteral("window.armed")).toList();
    ASSERT_EQ(armed.size(), 2);
    EXPECT_GT(armed[0].toInt(), 0);
    EXPECT_EQ(armed[1].toString(), QString());
}

} // namespace
