#include "gui/editor/RecentMenu.h"

#include "core/app/Texts.h"
#include "gui/app/ThemeIcons.h"

#include <QDir>
#include <QFileInfo>

namespace quillora::gui {

RecentMenu::RecentMenu(const Texts& texts, std::function<QStringList()> files, QWidget* parent)
    : QMenu(QStringLiteral("Recent messages"), parent), m_texts(texts), m_files(std::move(files)) {
    setObjectName(QStringLiteral("mnuRecenti"));
    setIcon(themeIcon(QStringLiteral("document-open-recent")));
    connect(this, &QMenu::aboutToShow, this, &RecentMenu::rebuild);
}

void RecentMenu::rebuild() {
    clear();
    const QStringList files = m_files();
    bool anyMissing = false;
    int n = 0;
    for (const QString& file : files) {
        ++n;
        const QFileInfo info(file);
        const bool missing = !info.isFile();
        anyMissing |= missing;
        // "&1 name": the first nine entries can be picked from the keyboard.
        QString text = info.fileName();
        text.replace(u'&', QStringLiteral("&&"));
        if (n < 10)
            text = u'&' + QString::number(n) + u' ' + text;
        if (missing)
            text += u' ' + m_texts.get(QStringLiteral("RecentiMancante"));
        QAction* a = addAction(text);
        a->setObjectName(QStringLiteral("mnuRecenti_%1").arg(n));
        a->setData(file);
        a->setToolTip(QDir::toNativeSeparators(file));
        a->setStatusTip(QDir::toNativeSeparators(file));
        a->setEnabled(!missing);
        connect(a, &QAction::triggered, this, [this, file] { emit openRequested(file); });
    }
    if (files.isEmpty()) {
        QAction* none = addAction(m_texts.get(QStringLiteral("RecentiNessuno")));
        none->setObjectName(QStringLiteral("mnuRecentiNessuno"));
        none->setEnabled(false);
        return;
    }
    addSeparator();
    QAction* removeMissing = addAction(m_texts.get(QStringLiteral("RecentiRimuoviMancanti")));
    removeMissing->setObjectName(QStringLiteral("cmdRecentiRimuovi"));
    removeMissing->setEnabled(anyMissing);
    connect(removeMissing, &QAction::triggered, this, &RecentMenu::removeMissingRequested);
    QAction* clearList = addAction(m_texts.get(QStringLiteral("RecentiSvuota")));
    clearList->setObjectName(QStringLiteral("cmdRecentiSvuota"));
    connect(clearList, &QAction::triggered, this, &RecentMenu::clearRequested);
}

} // namespace quillora::gui
