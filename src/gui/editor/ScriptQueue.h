#pragma once

#include <QObject>
#include <QString>
#include <QTimer>
#include <QVariant>
#include <QWebEnginePage>

#include <deque>
#include <functional>

namespace quillora::gui {

// Runs scripts in a page's application world, and the browser's own edit actions, in the order
// they were asked for, and only once the page is ready for them (start()). A script's callback
// is called with its result only while this queue lives and no cancel() came in between;
// callbacks run while insideCallback() is true.
class ScriptQueue : public QObject {
    Q_OBJECT
public:
    using Callback = std::function<void(const QVariant&)>;
    // The script that prepares the page for an edit action; its page reports the action's effect
    // through actionSettled(token).
    using ArmScript = std::function<QString(int token)>;

    explicit ScriptQueue(QWebEnginePage* page, QObject* parent = nullptr);

    // The page is ready: first goes to the page at once, then everything queued follows.
    void start(const QString& first = QString());
    bool isStarted() const { return m_started; }
    // Drops everything queued; calls already sent answer into nothing. Scripts wait for the
    // next start().
    void cancel();

    void enqueue(const QString& script, Callback done = {});
    // The action waits for every script before it, and every later call waits for the action.
    void enqueueAction(QWebEnginePage::WebAction action, ArmScript arm);
    // Straight to the started page, ahead of anything queued: for reads that need not wait for
    // an edit action. Dropped when the page is not started.
    void runNow(const QString& script, Callback done = {});
    // The page saw the effect of the action armed with token.
    void actionSettled(int token);

    // True while a callback of a script runs: the engine does not answer a nested event loop
    // started there.
    static bool insideCallback();

private:
    struct Pending {
        QString script; // empty for an edit action
        QWebEnginePage::WebAction action = QWebEnginePage::NoWebAction;
        ArmScript arm;
        Callback done;
    };

    void pump();
    void send(const QString& script, Callback done);
    void startAction(QWebEnginePage::WebAction action, const ArmScript& arm);
    void finishAction();

    QWebEnginePage* m_page;
    std::deque<Pending> m_queue;
    quint64 m_generation = 0;
    bool m_started = false;
    int m_scriptsInFlight = 0;
    bool m_actionInFlight = false;
    int m_actionToken = 0;
    QTimer m_actionGrace;
};

} // namespace quillora::gui
