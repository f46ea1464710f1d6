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
    const std::size_t room = limit == 0 ? answer.foundCount() : limit - rowCount_;
    const std::size_t count = std::min(answer.foundCount(), room);
    if (count == 0) return;
    parts_.push_back({number, rowCount_});
    rowCount_ += count;
    std::vector<std::size_t>& places = placesIn_[number];
    for (std::size_t i = 0; i < answer.has().size(); ++i) {
        const std::size_t column = columnOf(answer.has()[i]);
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

const Result::Part& Result::partOf(std::size_t row) const {
    const auto endOf = [this](std::size_t part) {
        return part + 1 < parts_.size() ? parts_[part + 1].first : rowCount_;
    };
    if (row >= parts_[lastPart_].first && row < endOf(lastPart_)) return parts_[lastPart_];
    const auto next =
        std::upper_bound(parts_.begin(), parts_.end(), row,
                         [](std::size_t at, const Part& part) { return at < part.first; });
    lastPart_ = static_cast<std::size_t>(next - parts_.begin()) - 1;
    return parts_[lastPart_];
}

FoundRow Result::row(std::size_t row) const {
    const Part& part = partOf(row);
    return answers_[part.answer].found(row - part.first);
}

std::string_view Result::cell(std::size_t row, std::size_t column) const {
    const Part& part = partOf(row);
    const std::vector<std::size_t>& places = placesIn_[part.answer];
    if (column >= places.size() || places[column] == 0) return {};
    return answers_[part.answer].cell(row - part.first, places[column] - 1);
}

}  // namespace vek::find
