#pragma once

#include "core/app/Folders.h"
#include "core/app/Provisioning.h"
#include "core/app/bError.h"
#include "gui/ScriptedDialogs.h"
#include "gui/app/Session.h"

#include <QDir>
#include <QTemporaryDir>

// A fresh program session in a temporary folder: the shipped defaults provisioned and the log
// started, as a first start would leave them, with scripted dialogs (see scripted()).
inline quillora::gui::Session& freshSession(const QTemporaryDir& dir,
                                            const QString& language = QStringLiteral("English")) {
    using namespace quillora;
    gui::Session& s = gui::session();
    s = gui::Session{};
    s.currentLanguage = language;
    s.texts = Texts::builtIn(language);
    scriptDialogs();
    s.folders = Folders::derive(dir.filePath("app"), dir.filePath("docs"));
    QDir().mkpath(s.folders.appPath);
    Provisioning::ensureDataFolders(s.folders, QUILLORA_SOURCE_DIR "/data/defaults", "en_US");
    bError::InitError(s.folders);
    return s;
}
