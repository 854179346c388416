#include "core/app/ProgramFolders.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace quillora::ProgramFolders {

QString appPath() {
    const QString exeDir = QCoreApplication::applicationDirPath();
    const QString installed = QDir::cleanPath(exeDir + QStringLiteral("/../share/quillora"));
    if (QFileInfo(installed + QStringLiteral("/LANG_Quillora.lng")).exists())
        return withTrailingSlash(installed);
    return withTrailingSlash(exeDir + QStringLiteral("/data"));
}

QString appDataAllUser() {
    const QString loc = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    return withTrailingSlash(loc); // an unknown folder gives "/", as the old program did
}

Folders locate() {
    return Folders::derive(appPath(), appDataAllUser());
}

QString defaultsFolder(const Folders& folders) {
    return folders.appPath + QStringLiteral("defaults/");
}

} // namespace quillora::ProgramFolders
