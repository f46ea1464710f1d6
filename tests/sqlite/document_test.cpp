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
