#include "cli/Environment.h"

#include "core/app/ProgramFolders.h"

namespace quillora::cli {

Folders programFolders() {
    return ProgramFolders::locate();
}

} // namespace quillora::cli
