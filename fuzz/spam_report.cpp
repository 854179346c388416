// The spam filter's report is read from whatever file the filter left: any bytes give a
// verdict without crashing, and what is shown stays consistent with what was read.
#include "core/spamcheck/SpamReport.h"

#include <cmath>
#include <cstdlib>

using namespace quillora;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const SpamReport::Report r =
        SpamReport::parse(QByteArrayView(reinterpret_cast<const char*>(data), qsizetype(size)));
    if (!r.statusFound && (r.spam || r.score != 0 || r.required != 0 || !r.tests.isEmpty()))
        abort();
    if (r.rules.size() > r.details.size())
        abort();
    for (const QString& line : r.details) {
        if (line.isEmpty() || line != line.trimmed())
            abort();
    }
    const QString log = SpamReport::logText(r);
    if (!log.startsWith(SpamReport::summary(r)) ||
        !log.startsWith(r.spam ? u"Spam Status.....: YES" : u"Spam Status.....: NO"))
        abort();
    if (!SpamReport::scoreLabel(r.score, r.required).contains(u" / "))
        abort();
    const std::optional<int> cover = SpamReport::coverExtent(r.score, r.required);
    if (r.score > r.required && cover != 0)
        abort();
    if (cover && r.score >= 0 && r.score <= r.required && (*cover < 0 || *cover > 100))
        abort();
    return 0;
}
