#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <vector>

#include <vekdb/host/text_util.h>
#include <vekdb/table.h>
#include <vekdb/views/field_map.h>
#include <vekdb/views/view_rep.h>

namespace {

const std::vector<DBFieldDesc> threeColumns = {
    {"A", DBFieldTypes::text}, {"B", DBFieldTypes::text}, {"C", DBFieldTypes::text}};

/// The names in order, the hidden ones in brackets.
std::string shape(const FieldMap& map) {
    std::string text;
    for (int i = 0; i < static_cast<int>(map.size()); ++i) {
        const bool visible = map.isVisible(i);
        text.append(i > 0 ? " " : "").append(visible ? "" : "(");
        text.append(map[i].c_str()).append(visible ? "" : ")");
    }
    return text;
}

class TemporaryFile {
public:
    TemporaryFile()
        : path_(std::string(VEKDB_BINARY_DIR "/field_map_").append(std::to_string(getpid()))) {}
    ~TemporaryFile() { std::remove(path_.c_str()); }
    LightweightString<wchar_t> name() const { return fromUTF8(path_.c_str()); }

private:
    std::string path_;
};

}  // namespace

TEST(FieldMapFile, ReadingEntersTheParameterInTheViewAndSoInItsFile) {
    vekdb table(threeColumns);
    table.add_param("Project", "Log");
    VDBView view(&table);
    const FieldMap map(view);
    const TemporaryFile file;
    view->saveAsText(file.name(), true);
    vekdb reloaded(file.name(), 100, true);
    ASSERT_TRUE(reloaded.get_valid());
    EXPECT_STREQ(reloaded.get_param_val("V5_FIELD_MAP"), "");
    EXPECT_EQ(table.get_param_val("V5_FIELD_MAP"), nullptr);
}

TEST(FieldMapFile, OfATableComesBackFromItsFile) {
    vekdb table(threeColumns);
    FieldMap map(table);
    map.swap(0, 2);
    map.setVisible(1, false);
    table.add_param("V5_FIELD_MAP", map.asString().c_str());
    const TemporaryFile file;
    table.set_filename(file.name());
    table.add_records(1);
    ASSERT_EQ(table.save_text(), 1);
    vekdb reloaded(file.name(), 100, true);
    EXPECT_EQ(shape(FieldMap(reloaded)), "C (B) A");
}

TEST(FieldMapFile, OfAViewComesBackFromItsFile) {
    vekdb table(threeColumns);
    table.add_param("Project", "Log");
    VDBView view(&table);
    FieldMap map(view);
    map.setVisible(0, false);
    map.swap(0, 1);
    view->set_param_val("V5_FIELD_MAP", map.asString().c_str());
    const TemporaryFile file;
    view->saveAsText(file.name(), false);
    vekdb reloaded(file.name(), 100, true);
    const FieldMap back{VDBView(&reloaded)};
    EXPECT_EQ(shape(back), "B (A) C");
}
