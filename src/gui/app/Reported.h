#pragma once

#include "gui/app/WindowHelpers.h"

#include <QString>
#include <exception>

namespace quillora::gui {

// Runs an event handler; a failure becomes the error report naming the routine, and the
// program goes on.
template <class F> void reported(const QString& routine, QWidget* parent, F&& handler) {
    try {
        handler();
    } catch (const std::exception& e) {
        ShowErrorReport(routine, 0, QString::fromLocal8Bit(e.what()), parent);
    } catch (...) {
        ShowErrorReport(routine, 0, QStringLiteral("Unknown error"), parent);
    }
}

} // namespace quillora::gui
