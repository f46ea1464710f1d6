#include "model/script.h"

#include <sstream>

namespace script {

namespace {

template <std::size_t n>
const char* pick(const char* const (&texts)[n], int choice) {
    return texts[static_cast<std::size_t>(choice) % n];
}

int between(Random& random, int low, int high) {
    return std::uniform_int_distribution<int>(low, high)(random);
}

Op pickOp(Random& random, const std::vector<Weight>& weights, int total) {
    int left = between(random, 0, total - 1);
    std::size_t i = 0;
    while (left >= weights[i].weight) {
        left -= weights[i++].weight;
    }
    return weights[i].op;
}

}  // namespace

Script randomScript(Random& random, const std::vector<Weight>& weights, int rows, int steps) {
    int total = 0;
    for (const Weight& weight : weights) {
        total += weight.weight;
    }
    Script script{rows, {}};
    for (int i = 0; i < steps; ++i) {
        const Op op = pickOp(random, weights, total);
        script.steps.push_back({op, between(random, 0, 99), between(random, 0, 9999),
                                between(random, 0, 9999), between(random, 0, 9999)});
    }
    return script;
}

std::string asText(const Script& script) {
    std::string text = std::to_string(script.rows);
    for (const Step& step : script.steps) {
        text.append(" ").append(std::to_string(static_cast<int>(step.op)));
        for (int number : {step.who, step.a, step.b, step.c}) {
            text.append(":").append(std::to_string(number));
        }
    }
    return text;
}

Script fromText(const std::string& text) {
    Script script;
    std::istringstream in(text);
    in >> script.rows;
    int op = 0;
    char colon = 0;
    for (Step step{}; in >> op >> colon >> step.who >> colon >> step.a >> colon >> step.b >>
                      colon >> step.c;) {
        step.op = static_cast<Op>(op);
        script.steps.push_back(step);
    }
    return script;
}

const char* value(int choice) {
    static const char* const texts[] = {"a",  "B",    "b",   "A",  "",    " x",   "x",  "10",
                                        "2",  "A2",   "a10", "a2", "Cam", "camb", "zz", "zebra",
                                        "  ", "A002", "q_",  "",   "m",   "M\n",  "abc"};
    return pick(texts, choice);
}

const char* timecode(int choice) {
    static const char* const texts[] = {"01:00:00:10", "01:00:00;10", "",      "02:00:00:00",
                                        "01:00:10:00", "see note",    "01:00", "00:59:59:24",
                                        "03:00:00:00", "01:00:05:00"};
    return pick(texts, choice);
}

// Two of one identity, two in another case, some that are none.
const char* cookie(int choice) {
    static const char* const texts[] = {
        "0123456789abcdef0123456789abcdef00014d", "0123456789abcdef0123456789abcdef000242",
        "ffeeddccbbaa998877665544332211ff00014d", "FFEEDDCCBBAA998877665544332211AA00014D",
        "00000000000000000000000000000001000042", "no cookie",
        "",                                       "11111111111111111111111111111111000049",
        "22222222222222222222222222222222ffff4d", " 33333333333333333333333333333333000042 "};
    return pick(texts, choice);
}

const char* deletionText(int choice) {
    static const char* const texts[] = {"",     "3 ",  "0 1 2 ", "x ",    "2 2 2 ", "5 3 1 ",
                                        "-1 ",  " 4",  "1  2",   "7x 8",  "+2 ",    "4294967295 ",
                                        "99 98"};
    return pick(texts, choice);
}

const char* valueFor(unsigned column, int choice) {
    static const char* const numbers[] = {"0", "1", "2", "", "x", "-1", " 1", "10"};
    switch (column) {
        case 2:
        case 3:
            return timecode(choice);
        case 4:
            return cookie(choice);
        case 5:
            return pick(numbers, choice);
        default:
            return value(choice);
    }
}

std::vector<std::pair<std::string, unsigned>> columns() {
    return {{"Name", 'a'},     {"Scene", 'a'},  {"Start time", 't'},
            {"End time", 't'}, {"Cookie", 'a'}, {"Tag", 'n'}};
}

}  // namespace script
