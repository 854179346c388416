#pragma once

#include "gui/editor/SurfaceState.h"

#include <QObject>
#include <QString>
#include <QVariantMap>

namespace quillora::gui {

// The object the bridge script sees on the web channel: its slots are the calls the page
// makes. They run inside the engine's own task, where a nested event loop never receives the
// engine's answers, so each one only posts its signal: whoever listens is called from the Qt
// event loop, in the order the page made its calls.
class SurfaceBridge : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;

signals:
    void readyReported(const QString& href);
    void dirtyReported();
    void actionSettledReported(int token);
    void clickReported(const QVariantMap& state);
    void editReported(const QVariantMap& state);
    void mouseMoveReported(int x, int y);
    void mouseUpReported(int button, int x, int y, const QVariantMap& state);
    void imageDoubleClickReported();

public slots:
    void ready(const QString& href);
    void dirty();
    void actionSettled(int token);
    void clicked(const QVariantMap& state);
    void edited(const QVariantMap& state);
    void mouseMoved(int x, int y);
    void mouseUp(int button, int x, int y, const QVariantMap& state);
    void imageDoubleClicked();

private:
    template <typename F> void post(F emitSignal);
};

// The caret state as the bridge's editorState operation reports it.
SurfaceState surfaceStateFromBridge(const QVariantMap& m);

} // namespace quillora::gui
