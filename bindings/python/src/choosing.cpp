#include "choosing.h"

#include <array>
#include <cstring>
#include <string>

#include "arguments.h"
#include "errors.h"
#include "texts.h"

namespace vekpy {

namespace {

struct Sign {
    const char* sign;
    vek::Operator op;
};

constexpr std::array<Sign, 9> signs = {{{"=", vek::Operator::contains},
                                        {"empty", vek::Operator::empty},
                                        {"==", vek::Operator::equal},
                                        {"!=", vek::Operator::notEqual},
                                        {"<", vek::Operator::less},
                                        {"<=", vek::Operator::lessOrEqual},
                                        {">", vek::Operator::greater},
                                        {">=", vek::Operator::greaterOrEqual},
                                        {"~", vek::Operator::matches}}};

vek::Operator operatorOf(const std::string& wanted) {
    for (const Sign& sign : signs) {
        if (wanted == sign.sign) return sign.op;
    }
    throw py::value_error("no condition has the operator '" + wanted +
                          "': =, ==, !=, <, <=, >, >=, ~ or empty");
}

void addCondition(py::handle condition, vek::Choice& choice) {
    if (!py::isinstance<py::tuple>(condition)) {
        choice.where(Text(condition, "a condition").view());
        return;
    }
    const auto parts = py::reinterpret_borrow<py::tuple>(condition);
    if (parts.size() != 3)
        throw py::value_error("a condition has a column, an operator and a text");
    choice.where(Text(parts[0], "the name of a column").view(),
                 operatorOf(Text(parts[1], "an operator").string()),
                 Text(parts[2], "a text").view());
}

void addOrder(py::handle order, vek::Choice& choice) {
    if (order.is_none()) return;
    if (py::isinstance<py::str>(order) || py::isinstance<py::bytes>(order)) {
        choice.order(Text(order, "an order").view());
        return;
    }
    std::vector<std::string> names;
    for (py::handle name : order) names.push_back(Text(name, "the name of a column").string());
    choice.order(std::move(names));
}

void addOption(const std::string& name, py::handle value, vek::Choice& choice) {
    if (name == "any") {
        choice.any(truthIn(value));
    } else if (name == "at") {
        choice.at(Text(value, "a timecode").view());
    } else if (name == "tagged") {
        choice.tagged(truthIn(value));
    } else if (name == "unique") {
        choice.unique(Text(value, "the name of a column").view());
    } else if (name == "duplicates") {
        choice.duplicates(Text(value, "the name of a column").view());
    } else if (name == "order") {
        addOrder(value, choice);
    } else if (name == "reverse") {
        choice.reverse(truthIn(value));
    } else if (name == "limit") {
        choice.limit(countIn(value, "a limit"));
    } else if (name == "offset") {
        choice.offset(countIn(value, "an offset"));
    } else {
        throw py::type_error("no choice has a '" + name + "'");
    }
}

struct Chosen {
    std::vector<unsigned> rows;
    std::size_t matched = 0;
};

Chosen chosenOf(const Hold& hold, const View& among, const vek::Choice& choice) {
    const std::vector<unsigned>* rows = among ? &among->rows(hold) : nullptr;
    vek::Reason reason;
    Chosen chosen;
    unlocked([&] {
        const vek::Result<vek::View> view =
            rows != nullptr ? hold->chooseAmong(*rows, choice) : hold->choose(choice);
        if (!view) {
            reason = view.reason();
            return;
        }
        chosen = {rowsOf(*view), view->matched()};
    });
    if (reason.kind != vek::Reason::none) raise(reason);
    return chosen;
}

}  // namespace

vek::Choice choiceOf(const py::args& conditions, const py::kwargs& options) {
    vek::Choice choice;
    for (py::handle condition : conditions) addCondition(condition, choice);
    for (const auto& [name, value] : options) {
        if (!value.is_none()) addOption(Text(name, "an option").string(), value, choice);
    }
    return choice;
}

View choose(const Shared& log, const View& among, vek::Choice choice) {
    const Hold hold(*log);
    Chosen chosen = chosenOf(hold, among, choice);
    auto view = std::make_shared<RowList>(log, std::move(chosen.rows), chosen.matched, among, hold);
    view->choice = std::move(choice);
    return view;
}

View part(const Shared& log, const View& among, const py::slice& slice) {
    const Hold hold(*log);
    const std::vector<unsigned> all = among ? among->rows(hold) : shownRows(hold);
    std::vector<unsigned> rows;
    for (std::size_t place : placesOf(slice, all.size())) rows.push_back(all[place]);
    const std::size_t size = rows.size();
    return std::make_shared<RowList>(log, std::move(rows), size, among, hold);
}

void refresh(const View& view) {
    if (!view->choice) return;
    const Hold hold(*view->log());
    view->rows(hold);
    Chosen chosen = chosenOf(hold, view->base(), *view->choice);
    view->put(std::move(chosen.rows), chosen.matched);
}

void order(const View& view, const py::args& columns, bool reverse) {
    vek::Choice choice;
    addOrder(columns, choice);
    choice.reverse(reverse);
    const Hold hold(*view->log());
    for (py::handle column : columns) hold.columnNamed(column);
    const std::size_t matched = view->matched();
    view->put(chosenOf(hold, view, choice).rows, matched);
}

}  // namespace vekpy
