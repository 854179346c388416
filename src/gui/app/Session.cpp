#include "gui/app/Session.h"

namespace quillora::gui {

Session& session() {
    static Session s;
    return s;
}

} // namespace quillora::gui
