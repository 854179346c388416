#include "gui/app/LanguageApplier.h"

#include "core/app/LanguageKeys.h"
#include "core/editor/CommandTable.h"
#include "gui/message/frmAllegati.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDockWidget>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenu>
#include <QPointer>
#include <QProgressBar>
#include <QTabWidget>
#include <QToolBar>
#include <QToolButton>
#include <QTreeWidget>
#include <limits>

namespace quillora::gui {

namespace {

using bLANG::LanguageKey;
using bLANG::Target;
using K = bLANG::TargetKind;

QString latin1(const char* text) {
    return QString::fromLatin1(text);
}

bool isMessage(const Target& t) {
    return t.kind == K::Message || t.kind == K::MergeFieldCaption;
}

// The window a key's section names, if it exists now: the main window, one of its children
// (the panes), or a top-level window (the splash, the About window).
QWidget* liveWindow(QMainWindow* main, const QString& name) {
    if (main->objectName() == name)
        return main;
    if (auto* child = main->findChild<QWidget*>(name))
        return child;
    for (QWidget* w : QApplication::topLevelWidgets()) {
        if (w != main && w->objectName() == name)
            return w;
    }
    return nullptr;
}

// A control-array element "lbl(1)" is the object "lbl_1".
QString controlName(const Target& t) {
    const QString id = latin1(t.id);
    return t.index >= 0 ? id + u'_' + QString::number(t.index) : id;
}

void setCaption(QObject* o, const QString& text) {
    if (auto* label = qobject_cast<QLabel*>(o))
        label->setText(text);
    else if (auto* button = qobject_cast<QAbstractButton*>(o))
        button->setText(text);
    else if (auto* group = qobject_cast<QGroupBox*>(o))
        group->setTitle(text);
    else if (auto* action = qobject_cast<QAction*>(o))
        action->setText(text);
    else if (auto* widget = qobject_cast<QWidget*>(o))
        widget->setWindowTitle(text);
}

void setMenuTitle(QWidget* window, QMenu* menu, const QString& text) {
    menu->setTitle(text);
    // A menu on a toolbar is a button that shows the title without its accelerator mark.
    const QString plain = editor::highlightText(text);
    for (QToolButton* b : window->findChildren<QToolButton*>()) {
        if (b->menu() == menu) {
            b->setText(plain);
            b->setToolTip(plain);
        }
    }
}

void setColumnHeader(QObject* o, int column, const QString& text) {
    if (auto* tree = qobject_cast<QTreeWidget*>(o)) {
        if (column < tree->columnCount())
            tree->headerItem()->setText(column, text);
    } else if (auto* view = qobject_cast<QAbstractItemView*>(o); view && view->model()) {
        view->model()->setHeaderData(column, Qt::Horizontal, text);
    }
}

// Puts one text on the widgets of `window`; elements that the window lacks are left alone.
void put(QWidget* window, const Target& t, const QString& text) {
    const QString id = latin1(t.id);
    switch (t.kind) {
    case K::Message:
        return;
    case K::MergeFieldCaption:
        if (auto* a = window->findChild<QAction*>(latin1(t.command)))
            a->setText(text);
        return;
    case K::WindowCaption:
        window->setWindowTitle(text);
        return;
    case K::ControlCaption:
        if (QObject* o = window->findChild<QObject*>(controlName(t)))
            setCaption(o, text);
        return;
    case K::ToolButton:
        if (auto* a = window->findChild<QAction*>(id))
            a->setText(text);
        return;
    case K::ToolButtonTip:
        if (auto* a = window->findChild<QAction*>(id))
            a->setToolTip(text);
        return;
    case K::ComboCaption:
        if (auto* c = window->findChild<QComboBox*>(id))
            c->setToolTip(editor::highlightText(text));
        return;
    case K::PopupMenu:
        if (auto* m = window->findChild<QMenu*>(id))
            setMenuTitle(window, m, text);
        return;
    case K::EditLabel:
        if (auto* edit = window->findChild<QLineEdit*>(id)) {
            for (QLabel* label : window->findChildren<QLabel*>()) {
                if (label->buddy() == edit)
                    label->setText(text);
            }
        }
        return;
    case K::StaticText:
        if (auto* label = window->findChild<QLabel*>(id))
            label->setText(text);
        return;
    case K::DockCaption:
        if (auto* dock = window->findChild<QDockWidget*>(id))
            dock->setWindowTitle(text);
        return;
    case K::ToolbarName:
        if (auto* bar = window->findChild<QToolBar*>(id))
            bar->setWindowTitle(text);
        return;
    case K::TabToolTip:
    case K::TabCaption:
        if (auto* tabs = window->findChild<QTabWidget*>(id); tabs && t.index < tabs->count()) {
            if (t.kind == K::TabToolTip)
                tabs->setTabToolTip(t.index, text);
            else
                tabs->setTabText(t.index, text);
        }
        return;
    case K::ColumnHeader:
        if (QObject* o = window->findChild<QObject*>(id))
            setColumnHeader(o, t.index, text);
        return;
    }
}

// The main window's title is "Quillora - [name]", set by its title routine after every load
// and save; the language's caption would only flash before it.
bool ownedByTitleRoutine(const QWidget* window, const Target& t) {
    return t.kind == K::WindowCaption && qobject_cast<const QMainWindow*>(window);
}

} // namespace

bLANG::LoadResult applyLanguage(QMainWindow* main, Texts& texts, const QString& languageFile,
                                const QString& currentLanguage,
                                std::function<void(qint64, qint64)> progress) {
    return applyLanguage(main, texts, bLANG::ReadLanguageTexts(languageFile, currentLanguage),
                         std::move(progress));
}

bLANG::LoadResult applyLanguage(QMainWindow* main, Texts& texts, const bLANG::LanguageTexts& read,
                                std::function<void(qint64, qint64)> progress) {
    const auto apply = [&](const QString& fullKey, const QString& text) {
        const LanguageKey* key = bLANG::findKey(fullKey);
        if (!key)
            return;
        texts.set(bLANG::storeKey(*key), text);
        const Target& t = key->target;
        if (t.kind == K::Message)
            return;
        // A merge field's caption belongs to a command of the main window.
        QWidget* window =
            t.kind == K::MergeFieldCaption ? main : liveWindow(main, latin1(t.window));
        if (window && !ownedByTitleRoutine(window, t))
            put(window, t, text);
    };
    const bLANG::LoadResult result = bLANG::ApplyLanguageTexts(read, apply, progress);

    if (auto* pane = main->findChild<frmAllegati*>()) {
        const QString help = texts.get(QStringLiteral("alleg1"));
        if (!help.isEmpty())
            pane->setHelpText(help);
    }
    return result;
}

void applyWindowTexts(QWidget* window, const Texts& texts) {
    const QString name = window->objectName();
    for (const LanguageKey& key : bLANG::keys()) {
        const Target& t = key.target;
        if (isMessage(t) || name != QLatin1String(t.window) || ownedByTitleRoutine(window, t))
            continue;
        if (texts.contains(key.key))
            put(window, t, texts.get(key.key));
    }
}

void applyFieldNames(QMainWindow* main, const Texts& texts,
                     const bImpostazioni::FieldNames& names) {
    for (size_t i = 0; i < names.size(); ++i) {
        const QString command = QStringLiteral("cmdVarCampo%1").arg(i + 1);
        QAction* action = main->findChild<QAction*>(command);
        if (!action)
            continue;
        if (!names[i].isEmpty()) {
            // A user's name is plain text: "R&D" must not turn D into an accelerator.
            action->setText(QString(names[i]).replace(u'&', QStringLiteral("&&")));
            continue;
        }
        for (const LanguageKey& key : bLANG::keys()) {
            if (key.target.kind == K::MergeFieldCaption && command == latin1(key.target.command)) {
                const QString caption = texts.get(bLANG::storeKey(key));
                if (!caption.isEmpty())
                    action->setText(caption);
            }
        }
    }
}

std::function<void(qint64, qint64)> progressOn(QProgressBar* bar) {
    return [bar = QPointer<QProgressBar>(bar)](qint64 position, qint64 maximum) {
        if (!bar)
            return;
        const qint64 scale = maximum / std::numeric_limits<int>::max() + 1;
        const int top = int(maximum / scale);
        if (bar->minimum() != 0 || bar->maximum() != top)
            bar->setRange(0, top);
        // setValue paints at once when the bar visibly moves: the event loop is not running.
        bar->setValue(int(position / scale));
    };
}

} // namespace quillora::gui
