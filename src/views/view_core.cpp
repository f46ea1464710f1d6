#include <typeinfo>
#include <utility>

#include <vekdb/host/diagnostics.h>
#include <vekdb/host/grow_string.h>
#include "views/view_parts.h"

VDBViewRep::VDBViewRep() : parts_(new ViewParts) {}

// Once the private constructor is through, a failure further on runs the destructor.
VDBViewRep::VDBViewRep(vekdb* table) : VDBViewRep(table, nullptr) {}

VDBViewRep::VDBViewRep(vekdb* table, std::nullptr_t)
    : VDBViewRep(table, static_cast<const char*>(nullptr)) {}

VDBViewRep::VDBViewRep(vekdb* table, const char* spec) : VDBViewRep() {
    init();
    vdb(table);
    useSpec(spec);
}

VDBViewRep::VDBViewRep(vekdb* table, const char* const* names) : VDBViewRep() {
    init();
    vdb(table);
    if (names == nullptr) {
        useSpec(nullptr);
        return;
    }
    GrowString spec;
    for (; *names != nullptr; ++names) {
        spec.append(*names);
        spec.append(',');
    }
    fieldSpec(spec);
}

// Binding to nothing drops the base view only where there was a table.
VDBViewRep::~VDBViewRep() {
    vdb(nullptr);
    baseView(nullptr);
    fieldSpec(nullptr);
    delete parts_;
}

void VDBViewRep::init() {
    baseView(nullptr);
    parts_->tableRegistration.reset();
    parts_->baseRegistration.reset();
    parts_->table.set(nullptr);
    index().clear();
    fieldSpec(nullptr);
    parts_->fields.reset();
    condition_ = 0;
    sortOrder_ = 0;
    handleCount_ = 0;
    internRevision();
}

vekdb* VDBViewRep::table() const {
    return parts_->table.get();
}

VDBViewRep* VDBViewRep::base() const {
    return parts_->base.get();
}

VDBBase* VDBViewRep::source() const {
    VDBViewRep* under = base();
    return under != nullptr ? static_cast<VDBBase*>(under) : table();
}

// The table at the bottom of a stack that is made of nothing but this library's own classes,
// so that its answers are known; else null.
vekdb* VDBViewRep::plainTable() const {
    const VDBViewRep* view = this;
    while (const VDBViewRep* under = view->base()) {
        if (typeid(*under) != typeid(VDBViewRep)) {
            return nullptr;
        }
        view = under;
    }
    vekdb* bottom = view->table();
    return bottom != nullptr && typeid(*bottom) == typeid(vekdb) ? bottom : nullptr;
}

namespace {

void setParam(AssocList& params, const char* name, const char* value) {
    const LightweightString<char> text(value);
    params[LightweightString<char>(name)] = text;
}

void addParams(AssocList& params, const vekdb& from) {
    for (unsigned i = 0; i < from.get_num_params(); ++i) {
        setParam(params, from.get_param_name(i), from.get_param_text(i));
    }
}

void addParams(AssocList& params, const AssocList& from) {
    for (AssocListIter param(from); param; ++param) {
        setParam(params, param->name.c_str(), param->value.c_str());
    }
}

// Only a value without any text is marked. One that is merely empty has a text, so the entry
// made here stays empty.
void markRevision(AssocList& params) {
    LightweightString<char>& revision = params[LightweightString<char>("VEKDB")];
    if (revision.c_str() == nullptr) {
        revision = "Rev 1";
    }
}

}  // namespace

// What a view takes over from a source, had before it lets go of the old one: a binding that
// fails changes nothing.
struct VDBViewRep::Binding {
    AssocList params;
    Quor::Ptr<Quor::Guard> registration;
};

void VDBViewRep::dropRows(AssocList& params) {
    index().clear();
    parts_->params = std::move(params);
}

void VDBViewRep::vdb(vekdb* newTable) {
    vekdb* old = table();
    if (newTable == old) {
        return;
    }
    Binding binding;
    LightweightString<wchar_t> name = parts_->fileName;
    if (newTable != nullptr) {
        name = newTable->get_filename();
        addParams(binding.params, *newTable);
        markRevision(binding.params);
        binding.registration = listenTo(*newTable);
    }
    baseView(nullptr);
    dropRows(binding.params);
    if (old != nullptr) {
        old->deregisterNotification(parts_->tableRegistration);
    }
    parts_->tableRegistration = std::move(binding.registration);
    parts_->table.set(newTable);
    parts_->fileName = std::move(name);
}

// The new base is counted before the old one is let go, which may be all that keeps it.
void VDBViewRep::baseView(VDBViewRep* newBase) {
    VDBViewRep* old = base();
    if (newBase == old || (newBase != nullptr && newBase->standsOn(this))) {
        return;
    }
    Binding binding;
    if (newBase != nullptr) {
        addParams(binding.params, newBase->parts_->params);
        binding.registration = listenTo(*newBase);
        newBase->retain();
    }
    dropRows(binding.params);
    if (old != nullptr) {
        old->deregisterNotification(parts_->baseRegistration);
    }
    parts_->baseRegistration = std::move(binding.registration);
    parts_->base.set(newBase);
    if (old != nullptr) {
        old->release();
    }
}

bool VDBViewRep::standsOn(const VDBViewRep* view) const {
    const VDBViewRep* floor = this;
    while (floor != nullptr && floor != view) {
        floor = floor->base();
    }
    return floor != nullptr;
}

void VDBViewRep::retain() {
    ++handleCount_;
    doomed_ = false;
}

void VDBViewRep::release() noexcept {
    if (handleCount_ > 0) {
        --handleCount_;
    }
    if (handleCount_ > 0) {
        return;
    }
    if (pins_ > 0) {
        doomed_ = true;
        return;
    }
    delete this;
}

void VDBViewRep::fileName(LightweightString<wchar_t> name) {
    parts_->fileName = std::move(name);
}

void VDBViewRep::addParamsFrom(vekdb* from) {
    if (from != nullptr) {
        addParams(parts_->params, *from);
    }
}

void VDBViewRep::addParamsFrom(VDBViewRep* other) {
    if (other != nullptr && other != this) {
        addParams(parts_->params, other->parts_->params);
    }
}

const AssocList& VDBViewRep::params() const {
    return parts_->params;
}

void VDBViewRep::internRevision() {
    markRevision(parts_->params);
}

void VDBViewRep::clear() {
    index().clear();
}

void VDBViewRep::sizeIndexFor(int n) {
    index().sizeFor(n);
}

void VDBViewRep::append(int row) {
    index().append(static_cast<unsigned>(row));
}

void VDBViewRep::buildIndex() {
    index().forgetRows();
    const VDBBase* from = source();
    if (from == nullptr) {
        return;
    }
    const int rows = static_cast<int>(from->get_num_records());
    for (int i = 0; i < rows; ++i) {
        satisfiesCondition((*this)[i]);
        append(i);
    }
    index().letGo();
    sortIndex();
}

bool VDBViewRep::satisfiesCondition(dbrecord*) {
    if (condition_ != 0) {
        vek_splat("VDBViewRep::satisfiesCondition, not implemented\n");
    }
    return true;
}

void VDBViewRep::sortIndex() {
    if (sortOrder_ != 0) {
        vek_splat("VDBViewRep::sortIndex(), not implemented!\n");
    }
}

dbrecord* VDBViewRep::operator[](int row) const {
    const VDBBase* from = source();
    if (from == nullptr || !index().holds(row)) {
        return nullptr;
    }
    return from->get_record(index().sourceRow(row));
}

int VDBViewRep::findViewIndexForBaseRow(unsigned long row) const {
    return row <= ViewIndex::noRow ? index().find(static_cast<unsigned>(row)) : -1;
}

int VDBViewRep::find(const dbrecord* record) const {
    const int rows = record != nullptr ? index().backedCount() : 0;
    for (int i = 0; i < rows; ++i) {
        if ((*this)[i] == record) {
            return i;
        }
    }
    return -1;
}

unsigned VDBViewRep::sourceRow(int row) const {
    return index().sourceRow(row);
}

unsigned VDBViewRep::indexCapacity() const {
    return index().capacity();
}

unsigned VDBViewRep::slotTag(unsigned slot) const {
    return index().slotTag(slot);
}
