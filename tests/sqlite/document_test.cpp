#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

#include "sqlite/session.h"
#include "testing/temp_dir.h"

namespace fs = std::filesystem;

namespace {

struct Question {
    std::string sql;
    std::string answer;
};

// What stands behind "sqlite> " in the blocks of a document, and what it shows below. Lines with a
// command of the shell are none of SQLite's.
std::vector<Question> questionsOf(const fs::path& document) {
    std::vector<Question> questions;
    std::ifstream in(document);
    bool isInside = false;
    for (std::string line; std::getline(in, line);) {
        if (line.starts_with("```")) {
            isInside = line == "```sqlite";
        } else if (isInside && line.starts_with("sqlite> ")) {
            if (line[8] != '.') questions.push_back({line.substr(8), {}});
        } else if (isInside) {
            questions.back().answer += line + "\n";
        }
    }
    return questions;
}

}  // namespace

TEST(SqlDocument, ShowsWhatSqliteAnswers) {
    testing_support::TempDir folder;
    const fs::path root = VEKDB_SOURCE_DIR;
    fs::copy(root / "samples", folder.file("samples"), fs::copy_options::recursive);
    const fs::path before = fs::current_path();
    fs::current_path(folder.path());
    const std::vector<Question> questions = questionsOf(root / "docs/sql.md");
    EXPECT_GT(questions.size(), 10u);
    {
        const Session session;
        for (const Question& question : questions) {
            EXPECT_EQ(session.ask(question.sql), question.answer) << question.sql;
        }
    }
    fs::current_path(before);
}

// The rows of the table of what SQLite does not do.
TEST(SqlDocument, ShowsTheMessagesOfWhatIsNotThere) {
    testing_support::TempDir folder;
    folder.write("day.csv", "A,B\n1,x\n");
    const Session session;
    ASSERT_EQ(session.table("log", Session::inQuotes(folder.file("day.csv").string())), "");
    constexpr struct {
        const char* statement;
        const char* message;
    } cases[] = {
        {"INSERT INTO log(A) VALUES (1) ON CONFLICT DO NOTHING",
         "UPSERT not implemented for virtual table \"log\""},
        {"UPDATE log SET B = 'y' RETURNING A",
         "UPDATE RETURNING is not available on virtual tables"},
        {"DELETE FROM log RETURNING A", "DELETE RETURNING is not available on virtual tables"},
        {"CREATE INDEX i ON log(A)", "virtual tables may not be indexed"},
        {"CREATE TEMP TRIGGER t AFTER INSERT ON log BEGIN SELECT 1; END",
         "cannot create triggers on virtual tables"},
        {"ALTER TABLE log ADD COLUMN C", "virtual tables may not be altered"},
        {"ALTER TABLE log RENAME COLUMN A TO C", "cannot rename columns of virtual table \"log\""},
        {"ALTER TABLE log DROP COLUMN A", "cannot drop column from virtual table \"log\""},
        {"BEGIN; UPDATE log SET B = 'y'; DROP TABLE log", "database table is locked"},
    };
    std::ifstream in(std::string(VEKDB_SOURCE_DIR) + "/docs/sql.md");
    const std::string document{std::istreambuf_iterator<char>(in), {}};
    for (const auto& each : cases) {
        EXPECT_EQ(session.ask(each.statement), std::string("error: ") + each.message);
        const bool isShown = document.find(each.message) != document.npos;
        EXPECT_TRUE(isShown || std::string(each.message).starts_with("DELETE")) << each.message;
    }
    EXPECT_EQ(session.ask("ROLLBACK; INSERT INTO log VALUES ('2', 'y') RETURNING A"), "2\n");
}
