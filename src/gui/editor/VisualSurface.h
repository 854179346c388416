#pragma once

#include "core/editor/DocumentText.h"
#include "gui/editor/SurfaceState.h"

#include <QPoint>
#include <QString>
#include <QTimer>
#include <QUrl>
#include <QVariant>
#include <QWebEngineView>

#include <functional>
#include <memory>
#include <optional>

class QJsonArray;
class QPrinter;
class QTemporaryDir;
class QWebChannel;

namespace quillora::gui {

class ScriptQueue;
class SurfaceBridge;
class SurfacePage;

// The visual editing page (editable) and the preview (read-only): a web view whose own page
// scripts never run; our bridge script talks to C++ over a web channel in a separate world.
// Writes are queued in order and run once the page has loaded; reads of the caret come from a
// mirror (state()). Every signal is delivered from the event loop, never from inside one of the
// engine's callbacks, and the events that come with a caret move (clicked, edited,
// leftMouseUp) find the mirror already up to date.
class VisualSurface : public QWebEngineView {
    Q_OBJECT
public:
    explicit VisualSurface(bool editable, QWidget* parent = nullptr);
    ~VisualSurface() override;

    bool isEditable() const { return m_editable; }

    // Writes the HTML into a file of workFolder and loads it, so relative references resolve
    // there; a ready page whose head stays the same takes the new body in place instead, keeping
    // its address and folder. documentComplete() follows either way, and loadCount() grows. False
    // (old document kept) when the file cannot be written. An empty workFolder uses a private
    // temporary folder.
    bool setDocumentHTML(const QString& html, const QString& workFolder);
    // Runs the event loop, without user input, until the engine has begun the current load or
    // timeoutMs have passed. The engine begins a load only from the event loop: begun before the
    // rest of a window is built and painted, it runs meanwhile instead of after.
    void letTheLoadBegin(int timeoutMs);
    // Loaded, and the bridge answers.
    bool isReady() const { return m_ready; }
    // Grows with every document load, whoever asked for it.
    quint64 loadCount() const { return m_loads; }
    QUrl documentUrl() const { return m_documentUrl; }

    // The whole document as text, after every write queued before it. done is not called when
    // the page goes away before answering.
    void fetchDocumentHTML(std::function<void(const QString&)> done);
    // The one blocking read, for save, close and page switch: waits without user input, never
    // nests (nullopt when another wait is under way anywhere) and gives nullopt on timeout.
    // Refused (nullopt) inside a fetchDocumentHTML callback, where the engine could not answer.
    std::optional<QString> documentHTML(int timeoutMs = 10000);

    // A DECMD_* code. IMAGE, HYPERLINK and FINDTEXT ask the user when argument is empty.
    void execCommand(int decmd, const QVariant& argument = {});
    // At the caret, through the page's own insertHTML so its undo stays coherent; before the
    // user has placed a caret, at the start of the body. Nothing happens when the caret is in
    // no editable place (outside the body, or in the preview).
    void insertHtml(const QString& html);
    void setShowBorders(bool on);
    void setShowDetails(bool on);
    bool showBorders() const { return m_showBorders; }
    bool showDetails() const { return m_showDetails; }
    // Asks for a printer, then prints; nothing on the offscreen platform.
    void printDocument();
    // Highlights the next match; an empty text asks the user for one.
    void findText(const QString& text);
    // Reloads every image by clearing and restoring its src.
    void refreshImages();

    // Caret placement (the tag bar, tests): inside the first element matching a CSS selector,
    // before its child number offset (clamped to its child count).
    void placeCaret(const QString& selector, int offset);
    // Selects the contents of the first element matching a CSS selector.
    void selectContents(const QString& selector);
    // Selects the index-th element with that tag name in document order and scrolls to it.
    void selectElement(const QString& tag, int index);
    // The preview: shows the loaded page as dark-mode mail programs would (see darkPreview.js);
    // done gets whether the message has dark styles of its own.
    void showDark(bool force, std::function<void(bool)> done = {});

    // Selects the first element matching a CSS selector as a whole (as a click on an image).
    void selectElement(const QString& selector);

    // The property grid's writes and reads (see the bridge operations of the same names).
    // done gets "" or what went wrong.
    void setElementAttribute(const QString& kind, const QString& name, const QString& value,
                             std::function<void(const QString&)> done);
    // The selector texts of the document's style rules, and the error that stopped the walk.
    void styleSelectors(std::function<void(const QStringList&, const QString&)> done);
    // The body's margin, colour and background attributes as written (absent ones empty).
    void bodyValues(std::function<void(const QVariantMap&)> done);
    // Steps [{remove, name, value}] applied to the body in order.
    void setBodyAttributes(const QJsonArray& steps, std::function<void()> done);
    // The document's sound gets src and loop, or html goes in at the caret; done gets
    // "changed", "inserted" or "".
    void backgroundSound(const QString& src, const QString& loop, const QString& html,
                         std::function<void(const QString&)> done);
    // The caret where a point of the view (widget pixels) falls, when that is editable.
    void placeCaretAt(QPoint viewPos);

    // Drags that carry this format are the editor's own (a snippet from its pane): the page
    // never sees them, and a drop raises foreignDrop instead.
    void acceptForeignDrag(const QString& mimeType) { m_foreignFormats << mimeType; }

    const SurfaceState& state() const { return m_state; }

signals:
    void documentComplete();
    void stateChanged();
    void edited(); // the visual page had a key released or an input (not our own commands)
    void clicked();
    void mouseMoved(int x, int y); // page coordinates, throttled to one per frame
    void leftMouseUp();            // after the click, once an image under it got its shown size
    void contextMenuAt(QPoint globalPos);
    void imageDoubleClicked();
    void linkClicked(QUrl url);
    void fileDropped(const QString& path); // an importable file dropped from outside
    void foreignDrop(const QString& mimeType, QPoint viewPos);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void childEvent(QChildEvent* event) override;

private:
    void installBridgeScripts();
    void loadDocumentFile();
    void replaceDocument(const QString& html);
    // Queues quillora.call([name, args...]); args travel as JSON, never as script text.
    void callBridge(const QJsonArray& call, std::function<void(const QVariant&)> done = {});
    void readState();
    void applyState(const QVariantMap& map);
    void maybeComplete();
    QString composeHtml(const QVariant& parts) const;
    void connectBridge();

    const bool m_editable;
    const int m_serial;
    SurfacePage* m_page = nullptr;
    ScriptQueue* m_scripts = nullptr;
    QWebChannel* m_channel = nullptr;
    SurfaceBridge* m_bridge = nullptr;
    std::unique_ptr<QTemporaryDir> m_privateFolder;
    QString m_documentFile;
    std::optional<editor::SourceDoctype> m_sourceDoctype; // given back as written when unchanged
    QUrl m_documentUrl;
    quint64 m_loads = 0;
    bool m_loaded = false;
    bool m_loadStarted = false; // the engine has begun the current load
    bool m_bridgeReady = false;
    bool m_ready = false;
    bool m_showBorders = false;
    bool m_showDetails = false;

    QStringList m_foreignFormats;
    QTimer m_stateDebounce;
    SurfaceState m_state;
    std::unique_ptr<QPrinter> m_printer;
};

} // namespace quillora::gui
