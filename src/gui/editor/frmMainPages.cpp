// The three pages of the main window and how the body moves between them.
#include "core/editor/CommandTable.h"
#include "core/editor/DhtmlCommands.h"
#include "core/message/References.h"
#include "gui/app/ColorStyle.h"
#include "gui/app/Reported.h"
#include "gui/app/Session.h"
#include "gui/app/frmMessage.h"
#include "gui/editor/PreviewPane.h"
#include "gui/editor/SourceView.h"
#include "gui/editor/VisualSurface.h"
#include "gui/editor/frmMain.h"

#include <QAction>
#include <QComboBox>
#include <QDockWidget>
#include <QFontDatabase>
#include <QKeyEvent>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QMenu>
#include <QSignalBlocker>
#include <QTabWidget>
#include <QToolBar>

namespace quillora::gui {

namespace {

// Key releases in the subject field count as edits of the message.
class KeyUpFilter : public QObject {
public:
    KeyUpFilter(QObject* parent, std::function<void()> onKeyUp)
        : QObject(parent), m_onKeyUp(std::move(onKeyUp)) {}
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::KeyRelease && !static_cast<QKeyEvent*>(event)->isAutoRepeat())
            m_onKeyUp();
        return QObject::eventFilter(watched, event);
    }

private:
    std::function<void()> m_onKeyUp;
};

} // namespace

void frmMain::connectPages() {
    connect(Tbs, &QTabWidget::tabBarClicked, this, [this](int index) {
        if (index >= 0)
            stcHelp->setText(editor::modeText(Tbs->tabText(index)));
    });
    connect(Tbs, &QTabWidget::currentChanged, this, &frmMain::Tbs_SelectedChanged);

    connect(DHTML, &VisualSurface::stateChanged, this, [this] {
        if (m_page == PageVisual)
            CheckButtonMail();
    });
    // Every load of the visual page: the font of what is typed at its insertion point.
    connect(DHTML, &VisualSurface::documentComplete, this, [this] {
        DHTML->execCommand(DECMD_SETFONTNAME, QStringLiteral("Verdana"));
        DHTML->execCommand(DECMD_SETFONTSIZE, QStringLiteral("2"));
    });
    connect(DHTML, &VisualSurface::clicked, this, &frmMain::VisualizzaTag);
    connect(DHTML, &VisualSurface::fileDropped, this, [this](const QString& path) {
        reported(QStringLiteral("frmMain.importDropped()"), this, [&] { importDropped(path); });
    });
    connect(DHTML, &VisualSurface::edited, this, [this] {
        Modificato();
        VisualizzaTag();
    });
    connect(DHTML, &VisualSurface::mouseMoved, this, [this](int x, int y) {
        RefreshPos(x, y);
        stcHelp->setText(editor::modeText(Tbs->tabText(Tbs->currentIndex())));
    });
    connect(DHTML, &VisualSurface::leftMouseUp, this, [this] {
        CheckButtonMail();
        VisualizzaTag();
    });

    connect(DHTML, &VisualSurface::imageDoubleClicked, this, [this] {
        VisualizzaTag();
        if (lblTag->text().toUpper() == QLatin1String("<IMG>"))
            EditaImmagine();
    });

    m_editMenu = new QMenu(this);
    m_editMenu->setObjectName(QStringLiteral("popModifica"));
    static const char* const kEditMenu[] = {"cmdUndo",   "cmdRedo",           nullptr,
                                            "cmdTaglia", "cmdCopia",          "cmdIncolla",
                                            nullptr,     "cmdSelezionaTutto", "cmdTrova"};
    for (const char* id : kEditMenu) {
        if (id)
            m_editMenu->addAction(m_bars.action(QString::fromLatin1(id)));
        else
            m_editMenu->addSeparator();
    }
    connect(DHTML, &VisualSurface::contextMenuAt, m_editMenu,
            [this](QPoint at) { m_editMenu->popup(at); });

    connect(m_bars.subject, &QLineEdit::textChanged, this,
            [this](const QString& text) { m_doc.subject = text; });
    m_bars.subject->installEventFilter(new KeyUpFilter(this, [this] { Modificato(); }));

    for (QAction* a : m_bars.actions()) {
        connect(a, &QAction::hovered, this,
                [this, a] { stcHelp->setText(editor::highlightText(a->text())); });
    }
    for (QToolBar* bar : m_bars.toolbars())
        connect(bar, &QToolBar::visibilityChanged, this, &frmMain::CheckToolbarStatus);
}

SourceView* frmMain::sourcePage() {
    if (CODE)
        return CODE;
    CODE = new SourceView(m_sourceHost);
    m_sourceHost->layout()->addWidget(CODE);
    if (!m_sourceScheme.isEmpty())
        CODE->ColoraEditCode(m_sourceScheme);
    // Made after the window took its colours, it takes them now.
    if (const auto* scheme = programColorScheme())
        colourControls(CODE, *scheme);
    CODE->setSourceText(std::exchange(m_sourceText, QString()));
    connectSourcePage();
    CODE->show();
    return CODE;
}

void frmMain::connectSourcePage() {
    connect(CODE, &SourceView::contextMenuAt, m_editMenu,
            [this](QPoint at) { m_editMenu->popup(at); });
    connect(CODE, &SourceView::edited, this, &frmMain::Modificato);
    connect(CODE, &SourceView::statusChanged, this, [this] {
        if (m_page == PageSource)
            CheckButtonCODE();
    });
    connect(CODE, &SourceView::pointerMoved, this,
            [this] { stcHelp->setText(editor::modeText(Tbs->tabText(Tbs->currentIndex()))); });
}

QString frmMain::sourceText() const {
    return CODE ? CODE->text() : m_sourceText;
}

void frmMain::setSourceText(const QString& html) {
    if (CODE)
        CODE->setSourceText(html);
    else
        m_sourceText = html;
}

VisualSurface* frmMain::previewPage() const {
    return m_preview->surface();
}

void frmMain::Tbs_SelectedChanged(int page) {
    const int previous = m_page;
    if (page == previous)
        return;
    m_page = page;
    const QString folder = workFolder();
    std::optional<QString> moved; // the body as it went from one page to the other
    if (previous == PageVisual && (page == PageSource || page == PagePreview)) {
        const std::optional<QString> html = DHTML->documentHTML();
        moved = html;
        if (html) {
            setSourceText(*html);
            m_pagesInStep = pagesNow();
            if (page == PagePreview)
                m_preview->showBody(References::redirectForPreview(*html, m_doc.restoreFolder),
                                    folder);
        } else {
            if (CODE)
                CODE->releaseIdleWork();
            reportError(QStringLiteral("Tbs_SelectedChanged"),
                        QStringLiteral("The visual page did not give back its HTML in time"));
        }
    } else if (previous == PageSource && (page == PageVisual || page == PagePreview)) {
        const QString text = sourceText();
        moved = text;
        // Unedited source is what the visual page shows already: loading it again would cost
        // a full parse and layout of the page, and the page's undo history.
        if (m_pagesInStep != pagesNow()) {
            if (!DHTML->setDocumentHTML(text, folder)) {
                // The visual page still holds the old body: leaving the source page would lose
                // every edit made there.
                m_pagesInStep.reset();
                showSourceInstead();
                reportError(QStringLiteral("Tbs_SelectedChanged"), pageFileError(folder));
                return;
            }
            m_pagesInStep = pagesNow();
        }
        if (page == PagePreview)
            m_preview->showBody(References::redirectForPreview(text, m_doc.restoreFolder), folder);
    }
    // Leaving the preview copies nothing: the preview never changes the HTML.
    if (page == PageVisual) {
        // The source page gets the visual page's HTML whenever it is shown from here.
        if (CODE)
            CODE->holdIdleWorkForNewText();
        DHTML->setFocus();
    } else if (page == PageSource)
        sourcePage()->setFocus();
    else
        m_preview->surface()->setFocus();
    CheckToolBar(page == PageVisual);
    for (QDockWidget* d : m_visualPanes)
        d->setEnabled(page == PageVisual);
    // The body has just moved between pages: a good moment for the recovery copy.
    if (DaSalvare())
        postRecoveryCopy(moved);
}

frmMain::PagesInStep frmMain::pagesNow() const {
    // A source page not made yet has no edits.
    return {CODE ? CODE->editCount() : 0, DHTML->loadCount()};
}

void frmMain::showSourceInstead() {
    m_page = PageSource; // so the switch below copies nothing from the visual page
    {
        const QSignalBlocker quiet(Tbs);
        Tbs->setCurrentIndex(PageSource);
    }
    sourcePage()->setFocus();
    CheckToolBar(false);
    for (QDockWidget* d : m_visualPanes)
        d->setEnabled(false);
}

void frmMain::VisualizzaTag() {
    QStringList innermostFirst = DHTML->state().tagPath;
    std::reverse(innermostFirst.begin(), innermostFirst.end());
    const editor::TagBar bar = editor::tagBarFor(editor::joinTagPath(innermostFirst));
    lblTags->setText(bar.tags);
    lblTag->setText(bar.last);
}

void frmMain::EditaImmagine() {
    bMessage::ShowMessageYesNo(QStringLiteral("Modifica immagine"),
                               m_texts.get(QStringLiteral("dhtmlModImmagineTitle")),
                               m_texts.get(QStringLiteral("dhtmlModImmagineTitle")),
                               m_texts.get(QStringLiteral("dhtmlModImmagine")));
}

void frmMain::RefreshPos(int x, int y) {
    stcX->setText(QStringLiteral("X: %1").arg(x));
    stcY->setText(QStringLiteral("Y: %1").arg(y));
}

void frmMain::CaricaFont() {
    QStringList families = QFontDatabase::families();
    families.sort(Qt::CaseInsensitive);
    m_bars.fontName->clear();
    m_bars.fontName->addItems(families);
    m_bars.fontName->setEditable(true);
    m_bars.fontName->setInsertPolicy(QComboBox::NoInsert);
    m_bars.fontName->setCurrentText(QStringLiteral("Arial"));
}

void frmMain::CaricaSize() {
    m_bars.fontSize->clear();
    for (int i = 1; i <= 7; ++i)
        m_bars.fontSize->addItem(QString::number(i));
    m_bars.fontSize->setCurrentText(QStringLiteral("3"));
}

void frmMain::ColoraEditCode() {
    const QString scheme = session().folders.pathFileImp + QStringLiteral("SyntaxEdit.dll");
    if (CODE)
        CODE->ColoraEditCode(scheme);
    else
        m_sourceScheme = scheme;
}

} // namespace quillora::gui
