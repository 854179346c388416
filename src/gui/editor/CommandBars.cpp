#include "gui/editor/CommandBars.h"

#include "core/editor/CommandTable.h"
#include "gui/app/ThemeIcons.h"

#include <QAction>
#include <QComboBox>
#include <QIcon>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenuBar>
#include <QToolBar>
#include <QToolButton>
#include <stdexcept>

namespace quillora::gui {

struct CommandSpec {
    const char* id;
    const char* caption; // built-in text; the language file replaces it
    const char* icon = nullptr;
    // Plain values: the table is built before the application exists.
    int standardKey = QKeySequence::UnknownKey;
    int key = 0;
    bool checkable = false;
};

namespace {

using KS = QKeySequence;
constexpr int ctrl(int key) {
    return int(Qt::CTRL) | key;
}

const CommandSpec kSpecs[] = {
    {"cmdNewMess", "&New message", "document-new", KS::New},
    {"cmdApriMess", "&Open message...", "document-open", KS::Open},
    {"cmdSalva", "&Save", "document-save", KS::Save},
    {"cmdSalvaAs", "Save &as...", "document-save-as", KS::SaveAs},
    {"cmdStampa", "&Print...", "document-print", KS::Print},
    {"cmdEsci", "E&xit", "application-exit", KS::Quit},
    {"cmdEsportaEml", "Export as e-&mail (.eml)...", "mail-message-new"},
    {"cmdAccount", "Se&nder accounts...", "system-users"},
    {"cmdImpTXT", "Import from a &text file...", "text-plain"},
    {"cmdImpHTML", "Import from an &HTML page...", "text-html"},
    {"cmdApriWord", "Import from a &Word document...", "x-office-document"},
    {"cmdApriOutlook", "Import from a &mail message...", "mail-message"},
    {"cmdImpDaImg", "Import from an i&mage...", "image-x-generic"},
    {"cmdApriModelli", "&Templates...", "document-multiple"},
    {"cmdUndo", "&Undo", "edit-undo", KS::Undo},
    {"cmdRedo", "&Redo", "edit-redo", KS::UnknownKey, ctrl(Qt::Key_Y)},
    {"cmdTaglia", "Cu&t", "edit-cut", KS::Cut},
    {"cmdCopia", "&Copy", "edit-copy", KS::Copy},
    {"cmdIncolla", "&Paste", "edit-paste", KS::Paste},
    {"cmdSelezionaTutto", "Select &all", "edit-select-all", KS::SelectAll},
    {"cmdTrova", "&Find...", "edit-find", KS::Find},
    {"cmdBold", "&Bold", "format-text-bold", KS::Bold, 0, true},
    {"cmdItalic", "&Italic", "format-text-italic", KS::Italic, 0, true},
    {"cmdUnderline", "&Underline", "format-text-underline", KS::Underline, 0, true},
    {"cmdNumerato", "&Numbered list", "format-list-ordered"},
    {"cmdPuntato", "B&ulleted list", "format-list-unordered"},
    {"cmdSX", "Decrease indent", "format-indent-less"},
    {"cmdDX", "Increase indent", "format-indent-more"},
    {"cmdLeft", "Align &left", "format-justify-left", KS::UnknownKey, ctrl(Qt::Key_L), true},
    {"cmdCenter", "Align &centre", "format-justify-center", KS::UnknownKey, ctrl(Qt::Key_E), true},
    {"cmdRight", "Align &right", "format-justify-right", KS::UnknownKey, ctrl(Qt::Key_R), true},
    {"cmdImage", "&Image...", "insert-image"},
    {"cmdLink", "&Link...", "insert-link", KS::UnknownKey, ctrl(Qt::Key_K)},
    {"cmdHR", "&Horizontal rule", "insert-horizontal-rule"},
    {"cmdTable", "&Table", "insert-table"},
    {"cmdTableInsRow", "Insert row", "edit-table-insert-row-below"},
    {"cmdTableInsCol", "Insert column", "edit-table-insert-column-right"},
    {"cmdTableDelRow", "Delete row", "edit-table-delete-row"},
    {"cmdTableDelCol", "Delete column", "edit-table-delete-column"},
    {"cmdModuliForm", "Form"},
    {"cmdModuliText", "Text field"},
    {"cmdModuliTextArea", "Text area"},
    {"cmdModuliCheckBox", "Check box"},
    {"cmdModuliRadioButton", "Radio button"},
    {"cmdModuliList", "List box"},
    {"cmdModuliListMenu", "Drop-down menu"},
    {"cmdModuliHidden", "Hidden field"},
    {"cmdVarRgs", "Company name"},
    {"cmdVarPiva", "VAT number"},
    {"cmdVarCog", "Surname"},
    {"cmdVarNom", "First name"},
    {"cmdVarCodFis", "Tax code"},
    {"cmdVarInd", "Address"},
    {"cmdVarCap", "Postcode"},
    {"cmdVarLoc", "Town"},
    {"cmdVarProv", "Province"},
    {"cmdVarTel", "Telephone"},
    {"cmdVarFax", "Fax"},
    {"cmdVarCell", "Mobile"},
    {"cmdVarEmail", "E-mail"},
    {"cmdVarCampo1", "Field 1"},
    {"cmdVarCampo2", "Field 2"},
    {"cmdVarCampo3", "Field 3"},
    {"cmdVarCampo4", "Field 4"},
    {"cmdVarCampo5", "Field 5"},
    {"cmdVarCampo6", "Field 6"},
    {"cmdVarCampo7", "Field 7"},
    {"cmdVarCampo8", "Field 8"},
    {"cmdVarCampo9", "Field 9"},
    {"cmdVarData1", "Date 1"},
    {"cmdVarData2", "Date 2"},
    {"cmdVarData3", "Date 3"},
    {"cmdVarOra1", "Time 1"},
    {"cmdVarOra2", "Time 2"},
    {"cmdVarOra3", "Time 3"},
    {"cmdAudio", "Background &sound...", "audio-x-generic"},
    {"cmdShowDetails", "Show &details", "view-list-details", KS::UnknownKey, 0, true},
    {"cmdShowBorder", "Show &borders", "view-grid", KS::UnknownKey, 0, true},
    {"cmdProprieta", "Message &properties...", "document-properties"},
    {"cmdPriAlta", "&High priority", "arrow-up", KS::UnknownKey, 0, true},
    {"cmdPriBassa", "&Low priority", "arrow-down", KS::UnknownKey, 0, true},
    {"cmdRefresh", "&Refresh images", "view-refresh", KS::Refresh},
    {"cmdCheckSpam", "&Spam check...", "mail-mark-junk"},
    {"cmdCheckMsg", "&Check message...", "tools-check-spelling", KS::UnknownKey, Qt::Key_F7},
    {"cmdSendTest", "Send &test...", "mail-send", KS::UnknownKey, ctrl(Qt::Key_T)},
    {"cmdSocial", "So&cial links...", "im-user"},
    {"cmdInfoSu", "&About Quillora", "help-about"},
    {"cmdHelp", "&Video guide", "help-contents", KS::HelpContents},
    {"cmdStatusTbMain", "&Main toolbar", nullptr, KS::UnknownKey, 0, true},
    {"cmdStatusTbStrumenti", "&Tools toolbar", nullptr, KS::UnknownKey, 0, true},
    {"cmdStatusTbTesto", "Te&xt toolbar", nullptr, KS::UnknownKey, 0, true},
    {"cmdStatusTbInserisci", "&Insert toolbar", nullptr, KS::UnknownKey, 0, true},
    {"cmdStatusTbMessaggio", "M&essage toolbar", nullptr, KS::UnknownKey, 0, true},
};

QStringList mergeCommands(const char* prefix) {
    QStringList out;
    for (const auto& f : editor::mergeFields()) {
        if (QLatin1String(f.command).startsWith(QLatin1String(prefix)))
            out << QString::fromLatin1(f.command);
    }
    return out;
}

} // namespace

QAction* CommandBars::make(QMainWindow* window, const CommandSpec& spec) {
    const QString id = QString::fromLatin1(spec.id);
    auto* a = new QAction(QString::fromUtf8(spec.caption), window);
    a->setObjectName(id);
    if (spec.icon)
        a->setIcon(themeIcon(QString::fromLatin1(spec.icon)));
    const QKeySequence shortcut = spec.key
                                      ? QKeySequence(spec.key)
                                      : QKeySequence(QKeySequence::StandardKey(spec.standardKey));
    if (!shortcut.isEmpty()) {
        a->setShortcut(shortcut);
        a->setShortcutContext(Qt::WindowShortcut);
    }
    a->setCheckable(spec.checkable);
    // Checkable commands keep their state through the dispatcher, like every other command.
    QObject::connect(a, &QAction::triggered, window, [this, id] {
        if (m_dispatch)
            m_dispatch(id);
    });
    window->addAction(a);
    m_actions.insert(id, a);
    return a;
}

QMenu* CommandBars::popup(QMainWindow* window, const QString& id, const QString& caption,
                          const QStringList& commands) {
    auto* m = new QMenu(caption, window);
    m->setObjectName(id);
    for (const QString& c : commands)
        m->addAction(action(c));
    m_menus.insert(id, m);
    return m;
}

void CommandBars::build(QMainWindow* window, std::function<void(const QString&)> dispatch) {
    m_dispatch = std::move(dispatch);
    for (const CommandSpec& s : kSpecs)
        make(window, s);

    QMenu* popTable =
        popup(window, QStringLiteral("popTable"), QStringLiteral("Table"),
              {"cmdTable", "cmdTableInsRow", "cmdTableInsCol", "cmdTableDelRow", "cmdTableDelCol"});
    popTable->setIcon(themeIcon(QStringLiteral("insert-table")));
    QMenu* popModuli =
        popup(window, QStringLiteral("popModuli"), QStringLiteral("Form elements"),
              {"cmdModuliForm", "cmdModuliText", "cmdModuliTextArea", "cmdModuliCheckBox",
               "cmdModuliRadioButton", "cmdModuliList", "cmdModuliListMenu", "cmdModuliHidden"});
    popModuli->setIcon(themeIcon(QStringLiteral("view-form")));
    QMenu* popVarCampi = popup(window, QStringLiteral("popVarCampi"), QStringLiteral("User fields"),
                               mergeCommands("cmdVarCampo"));
    QMenu* popVarData = popup(window, QStringLiteral("popVarData"), QStringLiteral("Dates"),
                              mergeCommands("cmdVarData"));
    QMenu* popVarOra = popup(window, QStringLiteral("popVarOra"), QStringLiteral("Times"),
                             mergeCommands("cmdVarOra"));
    QMenu* mnuVariabili =
        popup(window, QStringLiteral("mnuVariabili"), QStringLiteral("Merge &fields"),
              {"cmdVarRgs", "cmdVarPiva", "cmdVarCog", "cmdVarNom", "cmdVarCodFis", "cmdVarInd",
               "cmdVarCap", "cmdVarLoc", "cmdVarProv", "cmdVarTel", "cmdVarFax", "cmdVarCell",
               "cmdVarEmail"});
    mnuVariabili->setIcon(themeIcon(QStringLiteral("insert-text")));
    mnuVariabili->addSeparator();
    mnuVariabili->addMenu(popVarCampi);
    mnuVariabili->addMenu(popVarData);
    mnuVariabili->addMenu(popVarOra);
    QMenu* mnuModuli =
        popup(window, QStringLiteral("mnuModuli"), QStringLiteral("F&orm elements"), {});
    for (QAction* a : popModuli->actions())
        mnuModuli->addAction(a);
    QMenu* mnuProprieta = popup(window, QStringLiteral("mnuProprietaMessaggio"),
                                QStringLiteral("Message &properties"),
                                {"cmdPriAlta", "cmdPriBassa", "cmdProprieta", "cmdAudio"});

    QMenuBar* bar = window->menuBar();
    auto addMenu = [&](const QString& id, const QString& caption, const QList<QObject*>& items) {
        QMenu* m = popup(window, id, caption, {});
        for (QObject* o : items) {
            if (!o)
                m->addSeparator();
            else if (auto* sub = qobject_cast<QMenu*>(o))
                m->addMenu(sub);
            else
                m->addAction(qobject_cast<QAction*>(o));
        }
        bar->addMenu(m);
        return m;
    };
    auto A = [this](const char* id) -> QObject* { return action(QString::fromLatin1(id)); };
    QMenu* importMenu = new QMenu(QStringLiteral("&Import"), window);
    importMenu->setObjectName(QStringLiteral("mnuImporta"));
    for (const char* id :
         {"cmdImpTXT", "cmdImpHTML", "cmdApriWord", "cmdApriOutlook", "cmdImpDaImg"})
        importMenu->addAction(action(QString::fromLatin1(id)));
    addMenu(QStringLiteral("mnuFile"), QStringLiteral("&File"),
            {A("cmdNewMess"), A("cmdApriMess"), A("cmdApriModelli"), nullptr, A("cmdSalva"),
             A("cmdSalvaAs"), A("cmdEsportaEml"), nullptr, importMenu, nullptr, A("cmdStampa"),
             nullptr, A("cmdEsci")});
    addMenu(QStringLiteral("mnuModifica"), QStringLiteral("&Edit"),
            {A("cmdUndo"), A("cmdRedo"), nullptr, A("cmdTaglia"), A("cmdCopia"), A("cmdIncolla"),
             nullptr, A("cmdSelezionaTutto"), A("cmdTrova")});
    addMenu(QStringLiteral("mnuTesto"), QStringLiteral("&Text"),
            {A("cmdBold"), A("cmdItalic"), A("cmdUnderline"), nullptr, A("cmdNumerato"),
             A("cmdPuntato"), A("cmdSX"), A("cmdDX"), nullptr, A("cmdLeft"), A("cmdCenter"),
             A("cmdRight")});
    addMenu(QStringLiteral("mnuInsert"), QStringLiteral("&Insert"),
            {A("cmdImage"), A("cmdLink"), A("cmdHR"), popTable, nullptr, mnuVariabili, mnuModuli,
             nullptr, A("cmdSocial")});
    addMenu(QStringLiteral("mnuStrumenti"), QStringLiteral("T&ools"),
            {mnuProprieta, nullptr, A("cmdCheckMsg"), A("cmdCheckSpam"), A("cmdSendTest"),
             A("cmdAccount"), A("cmdRefresh")});
    QMenu* view = addMenu(QStringLiteral("mnuVisualizza"), QStringLiteral("&View"),
                          {A("cmdShowBorder"), A("cmdShowDetails"), nullptr, A("cmdStatusTbMain"),
                           A("cmdStatusTbStrumenti"), A("cmdStatusTbTesto"),
                           A("cmdStatusTbInserisci"), A("cmdStatusTbMessaggio")});
    view->addSeparator();
    addMenu(QStringLiteral("mnuHelp"), QStringLiteral("&Help"), {A("cmdHelp"), A("cmdInfoSu")});

    auto makeBar = [&](const QString& id, const QString& caption, const QList<QObject*>& items) {
        auto* tb = new QToolBar(caption, window);
        tb->setObjectName(id);
        tb->setIconSize(QSize(20, 20));
        for (QObject* o : items) {
            if (!o) {
                tb->addSeparator();
            } else if (auto* m = qobject_cast<QMenu*>(o)) {
                auto* b = new QToolButton(tb);
                b->setObjectName(m->objectName() + QStringLiteral("Button"));
                b->setMenu(m);
                b->setIcon(m->icon());
                b->setText(m->title().remove(u'&'));
                b->setToolTip(b->text());
                b->setPopupMode(QToolButton::InstantPopup);
                tb->addWidget(b);
            } else if (auto* w = qobject_cast<QWidget*>(o)) {
                tb->addWidget(w);
            } else {
                tb->addAction(qobject_cast<QAction*>(o));
            }
        }
        window->addToolBar(tb);
        m_toolbars.insert(id, tb);
        return tb;
    };

    subject = new QLineEdit(window);
    subject->setObjectName(QStringLiteral("txtOggetto"));
    subject->setMinimumWidth(320);
    subject->setClearButtonEnabled(true);
    auto* subjectLabel = new QLabel(QStringLiteral("Subject: "), window);
    subjectLabel->setObjectName(QStringLiteral("lblOggetto"));
    subjectLabel->setBuddy(subject);
    makeBar(QStringLiteral("TbMain"), QStringLiteral("Main"),
            {A("cmdNewMess"), A("cmdApriMess"), A("cmdSalva"), nullptr, A("cmdStampa"), nullptr,
             subjectLabel, subject});
    makeBar(QStringLiteral("TbMessaggio"), QStringLiteral("Message"),
            {A("cmdPriAlta"), A("cmdPriBassa"), nullptr, A("cmdProprieta"), A("cmdCheckMsg"),
             A("cmdCheckSpam"), A("cmdSendTest")});
    window->addToolBarBreak();
    makeBar(QStringLiteral("TbStrumenti"), QStringLiteral("Tools"),
            {A("cmdUndo"), A("cmdRedo"), nullptr, A("cmdTaglia"), A("cmdCopia"), A("cmdIncolla"),
             nullptr, A("cmdTrova"), nullptr, A("cmdShowBorder"), A("cmdShowDetails")});

    fontName = new QComboBox(window);
    fontName->setObjectName(QStringLiteral("cmbFontName"));
    fontName->setMinimumContentsLength(14);
    fontName->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    fontSize = new QComboBox(window);
    fontSize->setObjectName(QStringLiteral("cmbFontSize"));
    QObject::connect(fontName, &QComboBox::textActivated, window, [this] {
        if (m_dispatch)
            m_dispatch(QStringLiteral("cmbFontName"));
    });
    QObject::connect(fontSize, &QComboBox::textActivated, window, [this] {
        if (m_dispatch)
            m_dispatch(QStringLiteral("cmbFontSize"));
    });
    makeBar(QStringLiteral("TbTesto"), QStringLiteral("Text"),
            {fontName, fontSize, nullptr, A("cmdBold"), A("cmdItalic"), A("cmdUnderline"), nullptr,
             A("cmdNumerato"), A("cmdPuntato"), A("cmdSX"), A("cmdDX"), nullptr, A("cmdLeft"),
             A("cmdCenter"), A("cmdRight")});
    makeBar(QStringLiteral("TbInserisci"), QStringLiteral("Insert"),
            {A("cmdImage"), A("cmdLink"), A("cmdHR"), popTable, nullptr, mnuVariabili, popModuli});
}

QAction* CommandBars::action(const QString& id) const {
    return m_actions.value(id);
}
namespace {
template <class T> QList<T*> alive(const QHash<QString, QPointer<T>>& items) {
    QList<T*> out;
    for (const QPointer<T>& p : items) {
        if (p)
            out << p.data();
    }
    return out;
}
} // namespace

QList<QToolBar*> CommandBars::toolbars() const {
    return alive(m_toolbars);
}

QList<QMenu*> CommandBars::menus() const {
    return alive(m_menus);
}

QList<QAction*> CommandBars::actions() const {
    return alive(m_actions);
}

QAction* CommandBars::require(const QString& id) const {
    if (QAction* a = m_actions.value(id))
        return a;
    throw std::runtime_error("The command \"" + id.toStdString() + "\" does not exist");
}

QToolBar* CommandBars::requireToolbar(const QString& id) const {
    if (QToolBar* t = m_toolbars.value(id))
        return t;
    throw std::runtime_error("The toolbar \"" + id.toStdString() + "\" does not exist");
}

QToolBar* CommandBars::toolbar(const QString& id) const {
    return m_toolbars.value(id);
}
QMenu* CommandBars::menu(const QString& id) const {
    return m_menus.value(id);
}

} // namespace quillora::gui
