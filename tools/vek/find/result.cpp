#include "tools/vek/find/result.h"

#include <algorithm>

namespace vek::find {

Result::Result(const std::vector<Answer>& answers, const std::vector<std::string>& names,
               std::size_t limit)
    : answers_(answers), placesIn_(answers.size()) {
    for (const std::string& name : names) {
        columns_.try_emplace(name, titles_.size());
        titles_.push_back(name);
    }
    isKnown_.resize(titles_.size(), false);
    for (std::size_t i = 0; i < answers.size(); ++i) add(i, limit);
}

void Result::add(std::size_t number, std::size_t limit) {
    const Answer& answer = answers_[number];
    const std::size_t room = limit == 0 ? answer.found.size() : limit - rows_.size();
    const std::size_t count = std::min(answer.found.size(), room);
    if (count == 0) return;
    for (std::size_t row = 0; row < count; ++row) rows_.push_back({number, row});
    std::vector<std::size_t>& places = placesIn_[number];
    for (std::size_t i = 0; i < answer.has.size(); ++i) {
        const std::size_t column = columnOf(answer.has[i]);
        if (column >= places.size()) places.resize(column + 1, 0);
        places[column] = i + 1;
    }
}

std::size_t Result::columnOf(const FoundColumn& column) {
    const auto [known, isNew] = columns_.try_emplace(column.key, titles_.size());
    if (isNew) {
        titles_.push_back(column.title);
        isKnown_.push_back(true);
    }
    const std::size_t place = known->second;
    if (!isKnown_[place]) titles_[place] = column.title;
    isKnown_[place] = true;
    return place;
}

const FoundRow& Result::row(std::size_t row) const {
    return answers_[rows_[row].answer].found[rows_[row].row];
}

std::string_view Result::cell(std::size_t row, std::size_t column) const {
    const Place& place = rows_[row];
    const std::vector<std::size_t>& places = placesIn_[place.answer];
    if (column >= places.size() || places[column] == 0) return {};
    return answers_[place.answer].cell(place.row, places[column] - 1);
}

}  // namespace vek::find
