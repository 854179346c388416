// Nothing lost on a crash or a logout, the recent messages, and one window per message.
#include "core/app/Folders.h"
#include "core/app/bError.h"
#include "core/message/MessageFile.h"
#include "core/message/Recovery.h"
#include "gui/app/Dialogs.h"
#include "gui/app/MessageOwner.h"
#include "gui/app/Session.h"
#include "gui/app/frmMessage.h"
#include "gui/editor/RecentMenu.h"
#include "gui/editor/SourceView.h"
#include "gui/editor/frmMain.h"

#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QFile>
#include <QLocale>
#include <QMenu>
#include <QMenuBar>
#include <QSaveFile>
#include <QStatusBar>
#include <QTimer>

namespace quillora::gui {

namespace {

QString settingsFile() {
    return EditorSettings::fileIn(session().folders.pathFileImp);
}

} // namespace

void frmMain::buildRecentAndOwner() {
    m_recent = new RecentMenu(
        m_texts,
        [this] {
            m_settings = EditorSettings::read(settingsFile());
            return m_settings.recent;
        },
        this);
    if (auto* file = menuBar()->findChild<QMenu*>(QStringLiteral("mnuFile"))) {
        const QList<QAction*> items = file->actions();
        QAction* before = nullptr;
        for (qsizetype i = 0; i + 1 < items.size(); ++i)
            if (items[i]->objectName() == u"cmdApriModelli")
                before = items[i + 1];
        file->insertMenu(before, m_recent);
    }
    connect(m_recent, &RecentMenu::openRequested, this, [this](const QString& file) {
        if (openElsewhere(file))
            return;
        if (DaSalvare())
            askToSave();
        ApriMessaggio(file);
    });
    connect(m_recent, &RecentMenu::removeMissingRequested, this,
            [this] { changeRecent([](EditorSettings& s) { s.removeMissingRecent(); }); });
    connect(m_recent, &RecentMenu::clearRequested, this,
            [this] { changeRecent([](EditorSettings& s) { s.recent.clear(); }); });

    m_owner = new MessageOwner(this);
    connect(m_owner, &MessageOwner::forwardRequested, this, [this] {
        bError::wrtErrFree(QStringLiteral("-- Command -- Forward: ") + m_owner->ownedFile());
        if (isMinimized())
            showNormal();
        raise();
        activateWindow();
    });
}

void frmMain::startRecovery() {
    Session& s = session();
    m_settings = EditorSettings::read(settingsFile());
    m_recoveryWriter = std::make_unique<Recovery::Writer>(s.folders.pathFileImp);
    if (!m_recoveryWriter->isValid())
        bError::wrtErrFree(QStringLiteral("-- Recupero -- cartella non disponibile: ") +
                           Recovery::folder(s.folders.pathFileImp));
    m_autoSave = new QTimer(this);
    m_autoSave->setSingleShot(true);
    m_autoSave->setInterval(m_settings.autoSaveSeconds * 1000);
    connect(m_autoSave, &QTimer::timeout, this, [this] {
        if (DaSalvare() && !m_doc.loading)
            postRecoveryCopy();
    });
}

QString frmMain::recoveryCopyFile() const {
    return m_recoveryWriter ? m_recoveryWriter->messageFile() : QString();
}

namespace {

QString recoveryLogLine(const MessageFile::SaveResult& r) {
    return QStringLiteral("-- Recupero -- ") +
           (r.ok() ? r.path : QStringLiteral("errore: ") + r.description);
}

} // namespace

// The message as it is now, with this body when given, and the folder its references are read
// from; empty when there is no slot to write it to.
std::optional<std::pair<MessageDocument, QString>>
frmMain::recoverySnapshot(const std::optional<QString>& givenBody) {
    if (!m_recoveryWriter || !m_recoveryWriter->isValid())
        return std::nullopt;
    if (m_autoSave)
        m_autoSave->stop();
    collectDocument();
    MessageDocument copy = m_doc;
    // When the visual page cannot answer, the source page's text is the latest body there is.
    const std::optional<QString> body = givenBody ? givenBody : bodyHtml();
    copy.body = body ? *body : sourceText();
    const QString base = m_doc.currentPath.isEmpty()
                             ? session().baseFolder
                             : QFileInfo(m_doc.currentPath).absolutePath() + u'/';
    return std::make_pair(std::move(copy), base);
}

bool frmMain::writeRecoveryCopy(const std::optional<QString>& givenBody) {
    const auto snapshot = recoverySnapshot(givenBody);
    if (!snapshot)
        return false;
    const MessageFile::SaveResult r = m_recoveryWriter->write(snapshot->first, snapshot->second);
    bError::wrtErrFree(recoveryLogLine(r));
    return r.ok();
}

void frmMain::postRecoveryCopy(const std::optional<QString>& givenBody) {
    auto snapshot = recoverySnapshot(givenBody);
    if (!snapshot)
        return;
    // The log line is written from the window's thread. The writer is a member, so its thread
    // has ended before the window's QObject goes (which drops calls still queued).
    m_recoveryWriter->post(std::move(snapshot->first), std::move(snapshot->second),
                           [this](const MessageFile::SaveResult& r) {
                               QMetaObject::invokeMethod(
                                   this, [line = recoveryLogLine(r)] { bError::wrtErrFree(line); },
                                   Qt::QueuedConnection);
                           });
}

void frmMain::waitForRecoveryCopy() {
    if (m_recoveryWriter)
        m_recoveryWriter->waitIdle();
}

void frmMain::dropRecoveryCopy() {
    if (m_autoSave)
        m_autoSave->stop();
    if (m_recoveryWriter)
        m_recoveryWriter->remove();
}

void frmMain::closeForLogout() {
    bError::wrtErrFree(QStringLiteral("-- Chiusura su segnale --"));
    m_terminating = true;
    if (DaSalvare())
        writeRecoveryCopy();
    // A question already on screen (a close that was asking) will get no answer: it goes, and
    // the close it belongs to carries on without one.
    for (int guard = 0; guard < 16; ++guard) {
        auto* modal = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        if (!modal)
            break;
        modal->done(0);
    }
    if (!m_closing)
        ChiudiEDITOR();
}

void frmMain::sessionEnding() {
    m_terminating = true;
    if (DaSalvare())
        writeRecoveryCopy();
}

bool frmMain::offerRecovery() {
    if (!m_recoveryWriter)
        return false;
    std::vector<Recovery::Claim> claims = Recovery::claimOrphans(session().folders.pathFileImp);
    bool restored = false;
    for (Recovery::Claim& claim : claims) {
        if (m_closing)
            break; // ended while asking: the rest wait for the next start
        const Recovery::Copy& c = claim.copy();
        QStringList content{c.titleName};
        if (!c.originalPath.isEmpty())
            content << QDir::toNativeSeparators(c.originalPath);
        content << m_texts.get(QStringLiteral("RecuperoScritta")) + u' ' +
                       QLocale().toString(c.written, QLocale::ShortFormat);
        // One window holds one message: once a copy is back on screen, the others can still
        // be kept in a file of their own.
        const QList<int> buttons = restored ? QList<int>{kIdSaveElsewhere, kIdDiscard}
                                            : QList<int>{kIdRestore, kIdSaveElsewhere, kIdDiscard};
        const int id = bMessage::ShowMessageChoice(
            QStringLiteral("id_Recupero"), m_texts.get(QStringLiteral("Attenzione")),
            m_texts.get(QStringLiteral("RecuperoIstruzione")), content.join(u'\n'), buttons,
            quillora::bMessage::kIconWarning);
        bError::wrtErrFree(QStringLiteral("-- Recupero -- %1: %2").arg(c.messageFile).arg(id));
        if (id == kIdRestore) {
            restoreCopy(claim);
            restored = true;
        } else if (id == kIdSaveElsewhere) {
            saveCopyElsewhere(claim);
        } else if (id == kIdDiscard) {
            claim.discard();
        }
        // Closed without a choice: the copy stays for the next start.
    }
    return restored;
}

void frmMain::restoreCopy(Recovery::Claim& claim) {
    const Recovery::Copy c = claim.copy();
    if (!openFile(c.messageFile))
        return; // reported; the copy stays for the next start
    // The message comes back as it was on screen: its own file, with unsaved changes.
    m_doc.currentPath = c.originalPath;
    m_doc.titleName = c.titleName;
    m_doc.openedFileName = fileNamePart(c.originalPath);
    CambiaTitoloEditor();
    if (!c.originalPath.isEmpty())
        m_owner->own(c.originalPath);
    // The old copy goes only once this editor's own copy holds the message.
    auto held = std::make_shared<Recovery::Claim>(std::move(claim));
    QPointer<frmMain> self(this);
    connect(
        this, &frmMain::documentLoaded, this,
        [self, held] {
            // Out of the page's load callback first: the copy reads the page, which cannot
            // answer from inside one of its own callbacks.
            QTimer::singleShot(0, self, [self, held] {
                if (!self)
                    return;
                self->Modificato();
                if (self->writeRecoveryCopy())
                    held->discard();
            });
        },
        Qt::SingleShotConnection);
}

bool frmMain::saveCopyElsewhere(Recovery::Claim& claim) {
    const QString chosen = chooseFile(QStringLiteral("Save message"),
                                      QStringLiteral("Corvanta 4 message (*.mssx)|*.mssx"), true);
    if (chosen.isEmpty())
        return false;
    const QString target = MessageFile::withMessageExtension(chosen);
    QFile source(claim.copy().messageFile);
    QSaveFile out(target);
    if (!source.open(QIODevice::ReadOnly) || !out.open(QIODevice::WriteOnly) ||
        out.write(source.readAll()) != source.size() || !out.commit()) {
        out.cancelWriting();
        reportError(QStringLiteral("saveCopyElsewhere"),
                    out.errorString().isEmpty() ? source.errorString() : out.errorString());
        return false;
    }
    claim.discard();
    rememberRecent(target);
    return true;
}

void frmMain::rememberRecent(const QString& file) {
    changeRecent([&file](EditorSettings& s) { s.addRecent(file); });
}

void frmMain::changeRecent(const std::function<void(EditorSettings&)>& change) {
    // Read again first: another editor may have added to the list since.
    EditorSettings s = EditorSettings::read(settingsFile());
    change(s);
    if (!s.write(settingsFile()))
        bError::wrtErrFree(QStringLiteral("-- Recenti -- non scritto: ") + settingsFile());
    m_settings = s;
}

bool frmMain::openElsewhere(const QString& file) {
    if (!m_owner || file.isEmpty())
        return false;
    if (!m_owner->ownedFile().isEmpty() &&
        MessageOwner::serverName(file) == MessageOwner::serverName(m_owner->ownedFile()))
        return false;
    if (!MessageOwner::bringForward(file))
        return false;
    statusBar()->showMessage(m_texts.get(QStringLiteral("MessaggioGiaAperto")), 10000);
    return true;
}

} // namespace quillora::gui
