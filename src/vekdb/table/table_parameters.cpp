#include <vekdb/table.h>
#include "vekdb/table/table_parts.h"

namespace {

constexpr const char* revisionName = "VEKDB";
constexpr const char* revisionText = "Rev 1";

using String = LightweightString<char>;

}  // namespace

unsigned vekdb::find_param(const char* name) const {
    return parts().parameters.find(name);
}

const char* vekdb::get_param_val(const char* name) {
    unsigned slot = find_param(name);
    return slot == Parameters::none ? nullptr : parts().parameters.value(slot);
}

unsigned vekdb::add_param(const char* name, const char* value) {
    if (name == nullptr || value == nullptr || *name == '\0') return Parameters::none;
    Parameters& parameters = parts().parameters;
    unsigned slot = parameters.find(name);
    if (slot != Parameters::none) {
        if (String::compare(parameters.value(slot), value) == 0) return 0;
        parameters.replace(slot, value);
        recordChanged();
        return 0;
    }
    if (parameters.count() == 0) parameters.append(revisionName, revisionText);
    if (String::compare(name, revisionName) == 0) return Parameters::none;
    if (parameters.count() >= Parameters::most) return Parameters::none;
    parameters.append(name, value);
    recordChanged();
    return 0;
}

unsigned vekdb::set_param_val(const char* name, const char* value) {
    return add_param(name, value);
}

unsigned vekdb::get_num_params() const {
    return parts().parameters.count();
}
const char* vekdb::get_param_name(unsigned slot) const {
    return parts().parameters.name(slot);
}
const char* vekdb::get_param_text(unsigned slot) const {
    return parts().parameters.value(slot);
}
