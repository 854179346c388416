#include "gui/editor/ScriptQueue.h"

#include <QPointer>
#include <QWebEngineScript>

namespace quillora::gui {

namespace {

// Time the queue waits for an edit action that shows no effect in the page (undo with nothing
// to undo, select all with everything already selected) before going on.
constexpr int kActionGraceMs = 250;

int g_inCallback = 0;

struct CallbackScope {
    CallbackScope() { ++g_inCallback; }
    ~CallbackScope() { --g_inCallback; }
    CallbackScope(const CallbackScope&) = delete;
    CallbackScope& operator=(const CallbackScope&) = delete;
};

} // namespace

ScriptQueue::ScriptQueue(QWebEnginePage* page, QObject* parent) : QObject(parent), m_page(page) {
    m_actionGrace.setSingleShot(true);
    m_actionGrace.setInterval(kActionGraceMs);
    connect(&m_actionGrace, &QTimer::timeout, this, &ScriptQueue::finishAction);
}

bool ScriptQueue::insideCallback() {
    return g_inCallback > 0;
}

void ScriptQueue::start(const QString& first) {
    if (m_started)
        return;
    m_started = true;
    if (!first.isEmpty())
        send(first, {});
    pump();
}

void ScriptQueue::cancel() {
    // A new generation: the callbacks of calls already sent see they are stale.
    ++m_generation;
    m_queue.clear();
    m_started = false;
    m_scriptsInFlight = 0;
    m_actionInFlight = false;
    ++m_actionToken;
    m_actionGrace.stop();
}

void ScriptQueue::enqueue(const QString& script, Callback done) {
    m_queue.push_back({script, QWebEnginePage::NoWebAction, {}, std::move(done)});
    pump();
}

void ScriptQueue::enqueueAction(QWebEnginePage::WebAction action, ArmScript arm) {
    m_queue.push_back({QString(), action, std::move(arm), {}});
    pump();
}

void ScriptQueue::runNow(const QString& script, Callback done) {
    if (m_started)
        send(script, std::move(done));
}

void ScriptQueue::pump() {
    while (m_started && !m_actionInFlight && !m_queue.empty()) {
        if (m_queue.front().action != QWebEnginePage::NoWebAction) {
            // An action must not overtake the scripts before it; their last callback resumes.
            if (m_scriptsInFlight > 0)
                return;
            Pending next = std::move(m_queue.front());
            m_queue.pop_front();
            startAction(next.action, next.arm);
            return;
        }
        Pending next = std::move(m_queue.front());
        m_queue.pop_front();
        send(next.script, std::move(next.done));
    }
}

void ScriptQueue::send(const QString& script, Callback done) {
    ++m_scriptsInFlight;
    const quint64 generation = m_generation;
    QPointer<ScriptQueue> self(this);
    m_page->runJavaScript(script, QWebEngineScript::ApplicationWorld,
                          [self, generation, done = std::move(done)](const QVariant& result) {
                              // A dying page answers every call it still holds, with nothing.
                              if (!self || generation != self->m_generation)
                                  return;
                              --self->m_scriptsInFlight;
                              if (done) {
                                  CallbackScope scope;
                                  done(result);
                              }
                              // The callback may have cancelled, or deleted the queue.
                              if (self && generation == self->m_generation)
                                  self->pump();
                          });
}

void ScriptQueue::startAction(QWebEnginePage::WebAction action, const ArmScript& arm) {
    // triggerAction travels by the engine's input route, not the script route, and can land
    // after scripts sent later (seen on Qt 6.4 with SelectAll followed by a script). So the
    // page is armed first, the action follows the arming's answer, and the queue waits for the
    // page to report the action's effect, or for a short grace when it has none.
    m_actionInFlight = true;
    const int token = ++m_actionToken;
    // send() calls back only while this queue lives and has not been cancelled.
    send(arm ? arm(token) : QStringLiteral("true"), [this, token, action](const QVariant&) {
        if (token != m_actionToken || !m_actionInFlight)
            return;
        m_page->triggerAction(action);
        m_actionGrace.start();
    });
}

void ScriptQueue::actionSettled(int token) {
    if (m_actionInFlight && token == m_actionToken)
        finishAction();
}

void ScriptQueue::finishAction() {
    m_actionGrace.stop();
    m_actionInFlight = false;
    pump();
}

} // namespace quillora::gui
