// Any page goes through every rule of the check without crashing; every finding names a rule,
// reads without placeholders left, points at an element the page has, and the list is sorted
// by severity. Filling a sample recipient leaves a page without tokens as it was.
#include "core/app/Texts.h"
#include "core/spamcheck/PreSendCheck.h"
#include "core/spamcheck/SendSettings.h"

#include <QRegularExpression>
#include <algorithm>
#include <cstdlib>
#include <cstring>

using namespace quillora;

namespace {

void checkPage(const QString& html) {
    static const Texts texts = Texts::builtIn(QStringLiteral("English"));
    check::CheckInput input;
    input.html = html;
    input.baseFolder = QStringLiteral("/nonexistent/base/");
    input.sizeLimitBytes = 4096;
    const std::vector<check::Finding> all = check::runCheck(input);
    if (!std::is_sorted(all.begin(), all.end(),
                        [](const auto& a, const auto& b) { return a.severity < b.severity; }))
        abort();
    static const QRegularExpression placeholder(QStringLiteral("%\\d"));
    for (const check::Finding& f : all) {
        if (f.rule.isEmpty() || f.messageKey.isEmpty())
            abort();
        // Arguments come from the page and may hold "%1" themselves; only an empty text or a
        // placeholder with no argument for it is a fault.
        const QString text = check::describe(f, texts);
        if (text.isEmpty() || (f.args.isEmpty() && placeholder.match(text).hasMatch()))
            abort();
        if (f.element.isSet() && (f.element.tag.toLower() != f.element.tag))
            abort();
    }
    if (!html.contains(QStringLiteral(":::")) &&
        fillSample(html, {{QStringLiteral("nom"), QStringLiteral("Anna")}}) != html)
        abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    checkPage(QString::fromUtf8(reinterpret_cast<const char*>(data), qsizetype(size)));
    QString units(qsizetype(size / 2), Qt::Uninitialized);
    std::memcpy(units.data(), data, size_t(units.size()) * 2);
    checkPage(units);
    return 0;
}
