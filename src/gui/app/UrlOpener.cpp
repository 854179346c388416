#include "gui/app/UrlOpener.h"

#include "gui/app/WindowHelpers.h"

namespace quillora::gui::UrlOpener {

namespace {
Function& current() {
    static Function f;
    return f;
}
} // namespace

void set(Function opener) {
    current() = std::move(opener);
}

void open(QWidget* owner, const QString& target) {
    if (current())
        current()(owner, target);
    else
        Navigate(owner, target);
}

} // namespace quillora::gui::UrlOpener
