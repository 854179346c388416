#pragma once

#include "core/app/Folders.h"

class QApplication;

// Start-up: derives the folders, provisions a first start, opens the accounts database,
// writes the log header and shows the main window.
namespace quillora::gui::bMain {

// Runs the start-up sequence with the given folders and returns the main window's exit code.
int Main(QApplication& app, const Folders& folders, const QString& commandLineFile);

// SIGTERM and SIGINT close the main window the normal way.
void installSignalHandlers();

} // namespace quillora::gui::bMain
