#include "gui/editor/VisualSurface.h"

#include "core/editor/DhtmlCommands.h"
#include "core/message/DocumentConverter.h"
#include "gui/app/Dialogs.h"
#include "gui/editor/ScriptQueue.h"
#include "gui/editor/SurfaceBridge.h"
#include "gui/editor/SurfacePage.h"

#include <QChildEvent>
#include <QColor>
#include <QDir>
#include <QDropEvent>
#include <QEventLoop>
#include <QFile>
#include <QGuiApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMimeData>
#include <QPrinter>
#include <QTemporaryDir>
#include <QTemporaryFile>
#include <QWebChannel>
#include <QWebEngineLoadingInfo>
#include <QWebEnginePage>
#include <QWebEngineProfile>
#include <QWebEngineScript>
#include <QWebEngineScriptCollection>

#include <cstdio>

// Resources of a static library are only linked in when something names them.
static void initBridgeResources() {
    Q_INIT_RESOURCE(bridge);
}

namespace quillora::gui {

namespace {

// One blocking read at a time in the whole program, and none from inside a script callback:
// the engine does not run its tasks in a nested event loop, so a wait started inside one of
// its callbacks never receives its answer (seen on Qt 6.4: it always times out).
bool g_waitingForHtml = false;
int g_surfaceCount = 0;

constexpr int kStateDebounceMs = 30;

// The page's file is written anew for every load and only read by the engine: written whole
// under a new name and renamed over the old one, so the engine never reads half a file, but
// without waiting for the disk as a saved document does (it is made again from the document).
bool writePageFile(const QString& file, const QByteArray& bytes) {
    QTemporaryFile out(file + QStringLiteral(".XXXXXX"));
    if (!out.open() || out.write(bytes) != bytes.size() || !out.flush())
        return false;
    if (::rename(QFile::encodeName(out.fileName()).constData(),
                 QFile::encodeName(file).constData()) != 0)
        return false;
    out.setAutoRemove(false); // it is the page's file now
    return true;
}

QString resourceText(const QString& path) {
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly)) {
        qWarning("VisualSurface: missing resource %s", qPrintable(path));
        return QString();
    }
    return QString::fromUtf8(f.readAll());
}

// A bridge call as script text. The call travels as a JSON literal made by QJsonDocument: no
// value is ever spliced into script source by hand.
QString bridgeScript(const QJsonArray& call) {
    return QStringLiteral("quillora.call(%1)")
        .arg(QString::fromUtf8(QJsonDocument(call).toJson(QJsonDocument::Compact)));
}

QWebEnginePage::WebAction webAction(PageAction action) {
    switch (action) {
    case PageAction::Undo:
        return QWebEnginePage::Undo;
    case PageAction::Redo:
        return QWebEnginePage::Redo;
    case PageAction::Cut:
        return QWebEnginePage::Cut;
    case PageAction::Copy:
        return QWebEnginePage::Copy;
    case PageAction::Paste:
        return QWebEnginePage::Paste;
    case PageAction::SelectAll:
        return QWebEnginePage::SelectAll;
    }
    return QWebEnginePage::NoWebAction;
}

// A colour argument as the page wants it: a QColor, "#rrggbb" text, or the program's RGB
// number (red in the low byte).
QString colourArgument(const QVariant& v) {
    if (v.metaType().id() == QMetaType::QColor)
        return v.value<QColor>().name();
    if (v.metaType().id() == QMetaType::Int || v.metaType().id() == QMetaType::LongLong ||
        v.metaType().id() == QMetaType::UInt) {
        const qint64 rgb = v.toLongLong();
        return QColor(int(rgb & 0xff), int((rgb >> 8) & 0xff), int((rgb >> 16) & 0xff)).name();
    }
    return v.toString();
}

} // namespace

VisualSurface::VisualSurface(bool editable, QWidget* parent)
    : QWebEngineView(parent), m_editable(editable), m_serial(++g_surfaceCount) {
    initBridgeResources();
    m_page = new SurfacePage(QWebEngineProfile::defaultProfile(), this);
    setPage(m_page);
    m_scripts = new ScriptQueue(m_page, this);
    // The right button is ours (contextMenuAt); the engine's own menu would offer navigation.
    setContextMenuPolicy(Qt::NoContextMenu);
    installEventFilter(this); // drops reach the view itself as well as its focus proxy

    m_bridge = new SurfaceBridge(this);
    m_channel = new QWebChannel(this);
    m_channel->registerObject(QStringLiteral("surface"), m_bridge);
    m_page->setWebChannel(m_channel, QWebEngineScript::ApplicationWorld);
    installBridgeScripts();
    connectBridge();

    connect(m_page, &QWebEnginePage::loadingChanged, this,
            [this](const QWebEngineLoadingInfo& info) {
                if (!m_page->isExpected(info.url())) {
                    // A load asked for while an earlier one was still committing can be
                    // dropped by the engine without a word (seen on Qt 6.4 under load: the
                    // earlier one succeeds and ours never starts). Once the earlier one has
                    // ended, ours is asked for again.
                    if (info.status() != QWebEngineLoadingInfo::LoadStartedStatus &&
                        !m_loadStarted && !m_documentFile.isEmpty())
                        load(m_documentUrl);
                    return;
                }
                if (info.status() == QWebEngineLoadingInfo::LoadStartedStatus)
                    m_loadStarted = true;
                if (info.status() == QWebEngineLoadingInfo::LoadSucceededStatus) {
                    m_loaded = true;
                    maybeComplete();
                } else if (info.status() == QWebEngineLoadingInfo::LoadFailedStatus) {
                    qWarning("VisualSurface: loading %s failed: %s", qPrintable(m_documentFile),
                             qPrintable(info.errorString()));
                }
            });
    // Queued: the page reports from inside the engine's navigation callback.
    connect(m_page, &SurfacePage::linkClicked, this, &VisualSurface::linkClicked,
            Qt::QueuedConnection);
    connect(m_page, &QWebEnginePage::renderProcessTerminated, this,
            [this](QWebEnginePage::RenderProcessTerminationStatus status, int) {
                // Edits since the last load are gone with the process; the file is still there.
                if (status != QWebEnginePage::NormalTerminationStatus && !m_documentFile.isEmpty())
                    loadDocumentFile();
            });

    m_stateDebounce.setSingleShot(true);
    m_stateDebounce.setInterval(kStateDebounceMs);
    connect(&m_stateDebounce, &QTimer::timeout, this, &VisualSurface::readState);
}

VisualSurface::~VisualSurface() {
    // Pending script callbacks fire as the page dies; cancelled first, they do nothing.
    m_scripts->cancel();
    delete m_page;
    m_page = nullptr;
    if (!m_documentFile.isEmpty())
        QFile::remove(m_documentFile);
}

// The bridge delivers from the event loop, so the mirror is up to date before the signal that
// comes with a caret move.
void VisualSurface::connectBridge() {
    connect(m_bridge, &SurfaceBridge::readyReported, this, [this](const QString& href) {
        if (!m_page->isExpected(QUrl(href)))
            return; // a page we have already replaced
        m_bridgeReady = true;
        maybeComplete();
    });
    connect(m_bridge, &SurfaceBridge::dirtyReported, this, [this] {
        if (!m_stateDebounce.isActive())
            m_stateDebounce.start();
    });
    connect(m_bridge, &SurfaceBridge::actionSettledReported, m_scripts,
            &ScriptQueue::actionSettled);
    connect(m_bridge, &SurfaceBridge::clickReported, this, [this](const QVariantMap& state) {
        applyState(state);
        emit clicked();
    });
    connect(m_bridge, &SurfaceBridge::editReported, this, [this](const QVariantMap& state) {
        applyState(state);
        emit edited();
    });
    connect(m_bridge, &SurfaceBridge::mouseMoveReported, this, &VisualSurface::mouseMoved);
    connect(m_bridge, &SurfaceBridge::mouseUpReported, this,
            [this](int button, int x, int y, const QVariantMap& state) {
                applyState(state);
                if (button == 0) {
                    emit leftMouseUp();
                } else if (button == 2) {
                    const qreal zoom = zoomFactor();
                    emit contextMenuAt(mapToGlobal(QPoint(qRound(x * zoom), qRound(y * zoom))));
                }
            });
    connect(m_bridge, &SurfaceBridge::imageDoubleClickReported, this,
            &VisualSurface::imageDoubleClicked);
}

void VisualSurface::installBridgeScripts() {
    // Both scripts live in ApplicationWorld, which runs although page JavaScript is off
    // (checked on Qt 6.4: user scripts, runJavaScript, events, MutationObserver, microtasks and
    // requestAnimationFrame work there; only timers are dropped). qwebchannel.js comes first,
    // at document creation, so the bridge finds QWebChannel when the DOM is ready.
    QWebEngineScript channel;
    channel.setName(QStringLiteral("quillora-webchannel"));
    channel.setSourceCode(resourceText(QStringLiteral(":/qtwebchannel/qwebchannel.js")));
    channel.setInjectionPoint(QWebEngineScript::DocumentCreation);
    channel.setWorldId(QWebEngineScript::ApplicationWorld);
    channel.setRunsOnSubFrames(false);
    m_page->scripts().insert(channel);

    // One script, so the order of the operation files cannot depend on the collection.
    QString source = resourceText(QStringLiteral(":/quillora/bridge/bridge.js"));
    QDir ops(QStringLiteral(":/quillora/bridge/ops"));
    for (const QString& name : ops.entryList({QStringLiteral("*.js")}, QDir::Files, QDir::Name))
        source += u'\n' + resourceText(ops.filePath(name));
    QWebEngineScript bridge;
    bridge.setName(QStringLiteral("quillora-bridge"));
    bridge.setSourceCode(source);
    bridge.setInjectionPoint(QWebEngineScript::DocumentReady);
    bridge.setWorldId(QWebEngineScript::ApplicationWorld);
    bridge.setRunsOnSubFrames(false);
    m_page->scripts().insert(bridge);
}

bool VisualSurface::setDocumentHTML(const QString& html, const QString& workFolder) {
    QString folder = workFolder;
    if (folder.isEmpty()) {
        if (!m_privateFolder)
            m_privateFolder = std::make_unique<QTemporaryDir>();
        folder = m_privateFolder->path();
    }
    QDir dir(folder);
    if (!dir.mkpath(QStringLiteral(".")))
        return false;
    // Not setHtml: it fails above 2 MB, and a file gives relative references their folder.
    // Each surface has its own file, as the visual page and the preview share a folder.
    const QString file = QDir::cleanPath(dir.absoluteFilePath(
        QStringLiteral(".quillora-%1-%2.html")
            .arg(m_editable ? QLatin1String("visual") : QLatin1String("preview"))
            .arg(m_serial)));
    // A byte order mark outranks any charset the document declares, so the UTF-8 we write is
    // read as UTF-8.
    if (!writePageFile(file, "\xEF\xBB\xBF" + html.toUtf8()))
        return false;
    const bool sameFile = m_documentFile == file;
    if (!m_documentFile.isEmpty() && !sameFile)
        QFile::remove(m_documentFile);
    m_documentFile = file;
    m_sourceDoctype = editor::sourceDoctype(html);
    // Only the editing page: the preview's dark view leaves marks of its own in the page.
    if (m_editable && m_ready && sameFile)
        replaceDocument(html);
    else
        loadDocumentFile();
    return true;
}

void VisualSurface::replaceDocument(const QString& html) {
    // A new document for the page that keeps its head: a reload would parse, style and lay out
    // the page from nothing and bring the web channel up again, which on a large newsletter
    // takes seconds. Anything else (another head or doctype) is loaded from the file as usual.
    ++m_loads;
    const quint64 load = m_loads;
    m_ready = false; // until the new body is in: nobody reads or edits half a switch
    m_stateDebounce.stop();
    callBridge({QStringLiteral("replaceDocument"), html}, [this, load](const QVariant& result) {
        if (load != m_loads)
            return;
        const bool replaced = result.toBool();
        // From the event loop: a load must not start, nor a handler run, inside the engine's
        // callback.
        QMetaObject::invokeMethod(
            this,
            [this, load, replaced] {
                if (load != m_loads)
                    return;
                if (!replaced) {
                    loadDocumentFile();
                    return;
                }
                m_ready = true;
                readState();
                emit documentComplete();
            },
            Qt::QueuedConnection);
    });
}

void VisualSurface::loadDocumentFile() {
    ++m_loads;
    m_loaded = m_bridgeReady = m_ready = m_loadStarted = false;
    // Calls meant for the old document never reach the new one.
    m_scripts->cancel();
    m_stateDebounce.stop();

    // The load's number in the query tells this load apart from any earlier one of the same
    // file, for the navigation filter and for the bridge's ready call.
    QUrl url = QUrl::fromLocalFile(m_documentFile);
    url.setQuery(QStringLiteral("g=%1").arg(m_loads));
    m_documentUrl = url;
    m_page->expect(url);
    load(url);
}

void VisualSurface::letTheLoadBegin(int timeoutMs) {
    if (m_loadStarted || m_ready || m_documentFile.isEmpty())
        return;
    QEventLoop wait;
    QTimer::singleShot(timeoutMs, &wait, &QEventLoop::quit);
    connect(m_page, &QWebEnginePage::loadingChanged, &wait, [this, &wait] {
        if (m_loadStarted || m_ready)
            wait.quit();
    });
    wait.exec(QEventLoop::ExcludeUserInputEvents);
}

void VisualSurface::maybeComplete() {
    if (m_ready || !m_loaded || !m_bridgeReady)
        return;
    m_ready = true;
    const QJsonObject config{{QStringLiteral("editable"), m_editable},
                             {QStringLiteral("borders"), m_showBorders},
                             {QStringLiteral("details"), m_showDetails}};
    m_scripts->start(
        QStringLiteral("quillora.start(%1)")
            .arg(QString::fromUtf8(QJsonDocument(config).toJson(QJsonDocument::Compact))));
    // Queued like every signal of ours: handlers run from the event loop, never inside one of
    // the engine's callbacks.
    const quint64 load = m_loads;
    QMetaObject::invokeMethod(
        this,
        [this, load] {
            if (load == m_loads && m_ready)
                emit documentComplete();
        },
        Qt::QueuedConnection);
}

void VisualSurface::callBridge(const QJsonArray& call, std::function<void(const QVariant&)> done) {
    m_scripts->enqueue(bridgeScript(call), std::move(done));
}

void VisualSurface::fetchDocumentHTML(std::function<void(const QString&)> done) {
    callBridge(QJsonArray{QStringLiteral("documentNodes")},
               [this, done = std::move(done)](const QVariant& result) {
                   if (result.metaType().id() != QMetaType::QVariantList)
                       return;
                   if (done)
                       done(composeHtml(result));
               });
}

QString VisualSurface::composeHtml(const QVariant& parts) const {
    QList<editor::TopLevelNode> nodes;
    for (const QVariant& v : parts.toList()) {
        const QVariantMap m = v.toMap();
        const QString kind = m.value(QStringLiteral("kind")).toString();
        editor::TopLevelNode n;
        if (kind == QLatin1String("doctype")) {
            n.kind = editor::TopLevelNode::Kind::Doctype;
            n.doctype = {m.value(QStringLiteral("name")).toString(),
                         m.value(QStringLiteral("publicId")).toString(),
                         m.value(QStringLiteral("systemId")).toString()};
        } else {
            n.kind = kind == QLatin1String("comment") ? editor::TopLevelNode::Kind::Comment
                                                      : editor::TopLevelNode::Kind::Element;
            n.text = m.value(QStringLiteral("text")).toString();
        }
        nodes.append(n);
    }
    return editor::composeDocument(nodes, m_sourceDoctype);
}

std::optional<QString> VisualSurface::documentHTML(int timeoutMs) {
    if (g_waitingForHtml || ScriptQueue::insideCallback())
        return std::nullopt;
    g_waitingForHtml = true;
    struct Release {
        ~Release() { g_waitingForHtml = false; }
    } release;

    // The answer may come after a timeout, into a box that outlives this call.
    auto box = std::make_shared<std::optional<QString>>();
    QEventLoop loop;
    QPointer<QEventLoop> waiting(&loop);
    fetchDocumentHTML([box, waiting](const QString& html) {
        *box = html;
        if (waiting)
            waiting->quit();
    });
    if (!box->has_value()) {
        QTimer::singleShot(timeoutMs, &loop, &QEventLoop::quit);
        loop.exec(QEventLoop::ExcludeUserInputEvents);
    }
    return *box;
}

void VisualSurface::execCommand(int decmd, const QVariant& argument) {
    const DhtmlCommand* command = findDhtmlCommand(decmd);
    if (!command) {
        qWarning("VisualSurface: unknown command code %d", decmd);
        return;
    }
    const QString name = QString::fromLatin1(command->name);
    const QString execCommand = QStringLiteral("execCommand");
    switch (command->kind) {
    case DhtmlKind::PageAction:
        m_scripts->enqueueAction(webAction(command->action), [name](int token) {
            return bridgeScript({QStringLiteral("armAction"), token, name});
        });
        return;
    case DhtmlKind::BridgeOperation:
        callBridge({name, QString::fromLatin1(command->argument)});
        return;
    case DhtmlKind::Command:
        callBridge({execCommand, name});
        return;
    case DhtmlKind::CommandWithText:
        callBridge({execCommand, name, argument.toString()});
        return;
    case DhtmlKind::CommandWithColour:
        callBridge({execCommand, name, colourArgument(argument)});
        return;
    case DhtmlKind::CommandWithAddress: {
        QString address = argument.toString();
        if (address.isEmpty()) {
            const std::optional<QString> asked = dialogs().askText(
                this, tr(command->promptTitle), tr(command->promptLabel), QString());
            if (!asked || asked->isEmpty())
                return;
            address = *asked;
        }
        callBridge({execCommand, name, address});
        return;
    }
    case DhtmlKind::FindText:
        findText(argument.toString());
        return;
    case DhtmlKind::StateQuery:
        // Answered by the mirror (state().fontName, fontSize, foreColor), read afresh.
        m_stateDebounce.start();
        return;
    }
}

void VisualSurface::insertHtml(const QString& html) {
    callBridge({QStringLiteral("insertHtml"), html});
}

void VisualSurface::setShowBorders(bool on) {
    m_showBorders = on;
    callBridge({QStringLiteral("viewSheets"), m_showBorders, m_showDetails});
}

void VisualSurface::setShowDetails(bool on) {
    m_showDetails = on;
    callBridge({QStringLiteral("viewSheets"), m_showBorders, m_showDetails});
}

void VisualSurface::printDocument() {
    if (m_printer)
        return; // one print at a time
    auto printer = std::make_unique<QPrinter>(QPrinter::HighResolution);
    if (!dialogs().setUpPrinter(this, *printer))
        return;
    // The printer must live until the engine has finished with it.
    m_printer = std::move(printer);
    connect(
        this, &QWebEngineView::printFinished, this, [this](bool) { m_printer.reset(); },
        Qt::SingleShotConnection);
    print(m_printer.get());
}

void VisualSurface::findText(const QString& text) {
    QString wanted = text;
    if (wanted.isEmpty()) {
        const std::optional<QString> asked =
            dialogs().askText(this, tr("Find"), tr("Find what:"), m_page->selectedText());
        if (!asked || asked->isEmpty())
            return;
        wanted = *asked;
    }
    m_page->findText(wanted);
}

void VisualSurface::refreshImages() {
    callBridge({QStringLiteral("refreshImages")});
}

void VisualSurface::placeCaret(const QString& selector, int offset) {
    callBridge({QStringLiteral("placeCaret"), selector, offset});
}

void VisualSurface::selectContents(const QString& selector) {
    callBridge({QStringLiteral("selectContents"), selector});
}

void VisualSurface::selectElement(const QString& tag, int index) {
    callBridge({QStringLiteral("selectElement"), tag, index});
}

void VisualSurface::showDark(bool force, std::function<void(bool)> done) {
    callBridge({QStringLiteral("darkPreview"), force}, [done = std::move(done)](const QVariant& r) {
        if (done)
            done(r.toBool());
    });
}

void VisualSurface::selectElement(const QString& selector) {
    callBridge({QStringLiteral("selectFirst"), selector});
}

void VisualSurface::setElementAttribute(const QString& kind, const QString& name,
                                        const QString& value,
                                        std::function<void(const QString&)> done) {
    callBridge(
        {QStringLiteral("setElementAttribute"), QJsonObject{{QStringLiteral("kind"), kind},
                                                            {QStringLiteral("name"), name},
                                                            {QStringLiteral("value"), value}}},
        [done = std::move(done)](const QVariant& result) {
            if (done)
                done(result.toString());
        });
}

void VisualSurface::styleSelectors(std::function<void(const QStringList&, const QString&)> done) {
    callBridge({QStringLiteral("styleSelectors")},
               [done = std::move(done)](const QVariant& result) {
                   const QVariantMap m = result.toMap();
                   if (done)
                       done(m.value(QStringLiteral("selectors")).toStringList(),
                            m.value(QStringLiteral("error")).toString());
               });
}

void VisualSurface::bodyValues(std::function<void(const QVariantMap&)> done) {
    callBridge({QStringLiteral("bodyValues")}, [done = std::move(done)](const QVariant& result) {
        if (done)
            done(result.toMap());
    });
}

void VisualSurface::setBodyAttributes(const QJsonArray& steps, std::function<void()> done) {
    callBridge({QStringLiteral("setBodyAttributes"), steps},
               [done = std::move(done)](const QVariant&) {
                   if (done)
                       done();
               });
}

void VisualSurface::backgroundSound(const QString& src, const QString& loop, const QString& html,
                                    std::function<void(const QString&)> done) {
    callBridge({QStringLiteral("backgroundSound"), src, loop, html},
               [done = std::move(done)](const QVariant& result) {
                   if (done)
                       done(result.toString());
               });
}

void VisualSurface::placeCaretAt(QPoint viewPos) {
    const double zoom = zoomFactor() > 0 ? zoomFactor() : 1.0;
    callBridge({QStringLiteral("caretAtPoint"), viewPos.x() / zoom, viewPos.y() / zoom});
}

void VisualSurface::readState() {
    m_scripts->runNow(bridgeScript({QStringLiteral("editorState")}),
                      [this](const QVariant& result) {
                          if (result.metaType().id() == QMetaType::QVariantMap)
                              applyState(result.toMap());
                      });
}

void VisualSurface::applyState(const QVariantMap& map) {
    SurfaceState s = surfaceStateFromBridge(map);
    if (s == m_state)
        return;
    m_state = std::move(s);
    // Delivered from the event loop: this may run inside the engine's callback.
    QMetaObject::invokeMethod(this, &VisualSurface::stateChanged, Qt::QueuedConnection);
}

void VisualSurface::childEvent(QChildEvent* event) {
    // The engine's input widget (the focus proxy) can be replaced; each one gets the filter.
    if (event->added() && event->child()->isWidgetType())
        event->child()->installEventFilter(this);
    QWebEngineView::childEvent(event);
}

bool VisualSurface::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
    case QEvent::DragEnter:
    case QEvent::DragMove:
    case QEvent::Drop: {
        // Files and addresses from outside never enter the page (the engine would write their
        // address into an editable page). Text and HTML dragged within the page still move.
        auto* drop = static_cast<QDropEvent*>(event);
        for (const QString& format : m_foreignFormats) {
            if (!m_editable || !drop->mimeData() || !drop->mimeData()->hasFormat(format))
                continue;
            drop->setDropAction(Qt::CopyAction);
            drop->accept();
            if (event->type() == QEvent::Drop) {
                // The proxy fills the view, but a drop on the view itself is in its own pixels.
                const auto* w = qobject_cast<QWidget*>(watched);
                const QPoint at = w && w != this ? w->mapTo(this, drop->position().toPoint())
                                                 : drop->position().toPoint();
                emit foreignDrop(format, at);
            }
            return true;
        }
        // One document, mail, text or page from the desktop is imported as the new body.
        const QList<QUrl> urls = drop->mimeData() ? drop->mimeData()->urls() : QList<QUrl>();
        if (m_editable && urls.size() == 1 && urls.first().isLocalFile() &&
            DocumentConverter::typeOf(urls.first().toLocalFile()) !=
                DocumentConverter::SourceType::Unknown) {
            drop->setDropAction(Qt::CopyAction);
            drop->accept();
            if (event->type() == QEvent::Drop)
                emit fileDropped(urls.first().toLocalFile());
            return true;
        }
        if (drop->mimeData() && drop->mimeData()->hasUrls()) {
            drop->setDropAction(Qt::IgnoreAction);
            drop->ignore();
            return true;
        }
        break;
    }
    default:
        break;
    }
    return QWebEngineView::eventFilter(watched, event);
}

} // namespace quillora::gui
