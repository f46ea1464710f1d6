#include "tools/vek/report/figure.h"

#include "formats/failure.h"

namespace vek::page {

using formats::concat;

std::string figure(std::string_view id, std::string_view heading, const std::string& picture,
                   const std::string& below) {
    const std::string name(id);
    return concat("<figure aria-labelledby=\"", name, "\">\n<figcaption><h3 id=\"", name, "\">",
                  std::string(heading),
                  "</h3></figcaption>\n"
                  "<div class=\"picture\" tabindex=\"0\" role=\"region\" aria-labelledby=\"",
                  name, "\">\n", picture, "</div>\n", below, "</figure>\n");
}

std::string shownOf(std::size_t shown, std::size_t count, const std::string& what) {
    if (shown >= count) return {};
    return concat("<p class=\"note\">", std::to_string(shown), " of ", std::to_string(count), " ",
                  what, " are shown.</p>\n");
}

}  // namespace vek::page
