#include <gmock/gmock.h>

#include <string>

#include "formats/formats.h"
#include "formats/writing/output.h"
#include "formats/writing/writers.h"
#include "testing/logs.h"

using testing::HasSubstr;
using testing::Not;
using testing_support::logOf;
using namespace vek::formats;

namespace {

std::string pageOf(const std::string& text, vek::Format format) {
    const Log log = logOf(text);
    Output out("page");
    Losses losses;
    writeSheet(wholeSheet(log), format, {}, out, losses);
    return out.take();
}

}  // namespace

TEST(Pages, OfMarkdownKeepACellInItsCell) {
    const std::string page =
        pageOf("Name,Note\nA,one|two\nB,\"two\nlines\"\n", vek::Format::markdown);
    EXPECT_THAT(page, HasSubstr("one\\|two"));
    EXPECT_THAT(page, Not(HasSubstr("two\nlines")));
}

TEST(Pages, OfHtmlTakeNothingOfACellForMarks) {
    const std::string page = pageOf("Name,Note\nA,<b>&</b>\n", vek::Format::html);
    EXPECT_THAT(page, HasSubstr("&lt;b&gt;&amp;&lt;/b&gt;"));
    EXPECT_THAT(page, Not(HasSubstr("<b>&")));
}
