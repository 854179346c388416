#pragma once

#include "core/app/Folders.h"

#include <memory>

class QApplication;

namespace quillora::gui {
class frmMain;
class frmSplash;
} // namespace quillora::gui

// Start-up: derives the folders, provisions a first start, opens the accounts database,
// writes the log header and shows the main window.
namespace quillora::gui::bMain {

// The start-up sequence of the splash window's first activation: folders and first-start
// provisioning, language, addresses, accounts database, log header, then the main window
// loaded (not shown). A failure to open the accounts database is reported and remembered in
// the session; the editor starts without accounts.
std::unique_ptr<frmMain> Form_Activate(frmSplash& splash, const Folders& folders,
                                       const QString& commandLineFile);

// Runs the start-up sequence with the given folders and returns the main window's exit code.
int Main(QApplication& app, const Folders& folders, const QString& commandLineFile);

// SIGTERM and SIGINT close the main window the normal way.
void installSignalHandlers();

} // namespace quillora::gui::bMain
