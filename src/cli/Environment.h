#pragma once

#include "core/app/Folders.h"

namespace quillora::cli {

// The same folders the editor derives, for commands that use the shared data folder.
Folders programFolders();

} // namespace quillora::cli
