#pragma once

#include "core/app/Folders.h"

// Where this installation keeps its folders; the editor and the CLI derive them once.
namespace quillora::ProgramFolders {

// APP_PATH: "<exe>/../share/quillora/" when installed, "<exe>/data/" in the build tree.
QString appPath();

// APP_DATA_ALLUSER: the user's data folder (honours XDG_DATA_HOME), "/" when unknown.
QString appDataAllUser();

Folders locate();

// The template of the shared data folder that a first start copies.
QString defaultsFolder(const Folders& folders);

} // namespace quillora::ProgramFolders
