#include "gui/editor/SurfaceBridge.h"

namespace quillora::gui {

template <typename F> void SurfaceBridge::post(F emitSignal) {
    QMetaObject::invokeMethod(this, emitSignal, Qt::QueuedConnection);
}

void SurfaceBridge::ready(const QString& href) {
    post([this, href] { emit readyReported(href); });
}

void SurfaceBridge::dirty() {
    post([this] { emit dirtyReported(); });
}

void SurfaceBridge::actionSettled(int token) {
    post([this, token] { emit actionSettledReported(token); });
}

void SurfaceBridge::clicked(const QVariantMap& state) {
    post([this, state] { emit clickReported(state); });
}

void SurfaceBridge::edited(const QVariantMap& state) {
    post([this, state] { emit editReported(state); });
}

void SurfaceBridge::mouseMoved(int x, int y) {
    post([this, x, y] { emit mouseMoveReported(x, y); });
}

void SurfaceBridge::mouseUp(int button, int x, int y, const QVariantMap& state) {
    post([this, button, x, y, state] { emit mouseUpReported(button, x, y, state); });
}

void SurfaceBridge::imageDoubleClicked() {
    post([this] { emit imageDoubleClickReported(); });
}

SurfaceState surfaceStateFromBridge(const QVariantMap& m) {
    SurfaceState s;
    s.tagPath = m.value(QStringLiteral("tagPath")).toStringList();
    s.lastTag = s.tagPath.isEmpty() ? QString() : s.tagPath.last();
    s.currentId = m.value(QStringLiteral("id")).toInt();
    s.currentTagName = m.value(QStringLiteral("tagName")).toString();
    s.currentSrc = m.value(QStringLiteral("src")).toString();
    const auto flag = [&m](const char* key) { return m.value(QLatin1String(key)).toBool(); };
    s.bold = flag("bold");
    s.italic = flag("italic");
    s.underline = flag("underline");
    s.justifyLeft = flag("justifyLeft");
    s.justifyCenter = flag("justifyCenter");
    s.justifyRight = flag("justifyRight");
    s.canCut = flag("canCut");
    s.canCopy = flag("canCopy");
    s.canPaste = flag("canPaste");
    s.canUndo = flag("canUndo");
    s.canRedo = flag("canRedo");
    s.canSelectAll = flag("canSelectAll");
    s.fontName = m.value(QStringLiteral("fontName")).toString();
    s.fontSize = m.value(QStringLiteral("fontSize")).toString();
    s.foreColor = m.value(QStringLiteral("foreColor")).toString();
    s.hasSelection = flag("hasSelection");
    s.selectionType = m.value(QStringLiteral("selectionType")).toString();
    s.propertyTag = m.value(QStringLiteral("propertyTag")).toString();
    const QVariantMap attributes = m.value(QStringLiteral("properties")).toMap();
    for (auto it = attributes.cbegin(); it != attributes.cend(); ++it)
        s.properties.insert(it.key(), it.value().toString());
    s.changes = m.value(QStringLiteral("changes")).toULongLong();
    return s;
}

} // namespace quillora::gui
