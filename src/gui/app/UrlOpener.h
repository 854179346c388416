#pragma once

#include <QString>
#include <functional>

class QWidget;

// Every address or file the frame's small windows open goes through here, so that tests and
// scripted runs can see what would have been opened instead of starting a browser.
namespace quillora::gui::UrlOpener {

using Function = std::function<void(QWidget* owner, const QString& target)>;

// An empty function restores the default, Navigate.
void set(Function opener);
void open(QWidget* owner, const QString& target);

} // namespace quillora::gui::UrlOpener
