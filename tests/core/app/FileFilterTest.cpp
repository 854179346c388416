#include "core/app/FileFilter.h"

#include <gtest/gtest.h>

using quillora::FileFilter::qtFilter;

namespace {

struct FilterCase {
    const char* windows;
    const char* qt;
};

void PrintTo(const FilterCase& c, std::ostream* os) {
    *os << '"' << c.windows << '"';
}

class FileFilterTest : public testing::TestWithParam<FilterCase> {};

TEST_P(FileFilterTest, BecomesQtFilter) {
    EXPECT_EQ(qtFilter(QString::fromUtf8(GetParam().windows)), QString::fromUtf8(GetParam().qt));
}

INSTANTIATE_TEST_SUITE_P(
    Filters, FileFilterTest,
    testing::Values(FilterCase{"Tutti i file(*.*)|*.*", "Tutti i file (*.*)"},
                    FilterCase{"Tutti i file(*.*)|*.*|", "Tutti i file (*.*)"},
                    FilterCase{"Tutti i file(*.*)", "Tutti i file(*.*)"},
                    FilterCase{"A (*.a)|*.a|B|*.*", "A (*.a);;B (*.*)"},
                    FilterCase{"Immagini|*.jpg;*.gif; *.png|", "Immagini (*.jpg *.gif *.png)"},
                    // A parenthesis that is not the pattern must not be read as one by Qt.
                    FilterCase{"Pages (web)|*.htm;*.html", "Pages (web) (*.htm *.html)"},
                    FilterCase{"|*.mssx", "*.mssx (*.mssx)"},
                    FilterCase{"Messaggi|", "Messaggi (*)"},
                    FilterCase{"A|*.a|B (*.b)", "A (*.a);;B (*.b)"}, FilterCase{"", ""},
                    FilterCase{"||", ""}));

} // namespace
