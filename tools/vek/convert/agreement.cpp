#include "tools/vek/convert/agreement.h"

#include <algorithm>

#include "formats/text/text_lines.h"
#include "formats/writing/sheet_facts.h"

namespace vek::convert {

namespace {

using formats::ParameterText;
using formats::sameText;

bool has(const std::vector<ParameterText>& all, const ParameterText& one) {
    return std::any_of(all.begin(), all.end(), [&](const ParameterText& other) {
        return sameText(other.name, one.name) && other.value == one.value;
    });
}

}  // namespace

void Agreement::add(const Log& log, const std::vector<std::size_t>& places) {
    addParameters(log);
    addTypes(log, places);
    ++logs_;
}

void Agreement::addParameters(const Log& log) {
    std::vector<ParameterText> own = formats::ownParameters(log);
    if (logs_ == 0) {
        parameters_ = std::move(own);
        return;
    }
    for (const ParameterText& one : own) {
        if (!has(parameters_, one)) lostParameters_.insert(one.name);
    }
    std::erase_if(parameters_, [&](const ParameterText& one) {
        const bool isLost = !has(own, one);
        if (isLost) lostParameters_.insert(one.name);
        return isLost;
    });
}

void Agreement::addTypes(const Log& log, const std::vector<std::size_t>& places) {
    for (unsigned column = 0; column < places.size(); ++column) {
        if (types_.size() <= places[column]) types_.resize(places[column] + 1);
        Said& said = types_[places[column]];
        const Type type = log.table->get_field_type(column);
        if (!said.isThere) said = {type, true};
        if (said.type != type) said.type.reset();
    }
}

void Agreement::give(Log& log) const {
    for (const ParameterText& one : parameters_) log.setParameter(one.name, one.value);
    for (unsigned column = 0; column < types_.size(); ++column) {
        if (types_[column].type) log.table->set_fieldtype(column, *types_[column].type);
    }
    log.table->clear_changed();
}

std::set<std::string> Agreement::columns(const Log& log) const {
    std::set<std::string> names;
    for (unsigned column = 0; column < types_.size(); ++column) {
        const bool isText = log.table->get_field_type(column) == DBFieldTypes::text;
        if (types_[column].isThere && !types_[column].type && isText)
            names.insert(log.columnName(column));
    }
    return names;
}

}  // namespace vek::convert
