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

void VDBViewRep::dropRows() {
    index().clear();
    parts_->params.clear();
}

void VDBViewRep::vdb(vekdb* newTable) {
    vekdb* old = table();
    if (newTable == old) {
        return;
    }
    baseView(nullptr);
    dropRows();
    if (old != nullptr) {
        old->deregisterNotification(parts_->tableRegistration);
    }
    parts_->tableRegistration.reset();
    parts_->table.set(newTable);
    if (newTable != nullptr) {
        bindTable(newTable);
    }
}

void VDBViewRep::bindTable(vekdb* newTable) {
    parts_->fileName = newTable->get_filename();
    parts_->params.clear();
    addParamsFrom(newTable);
    internRevision();
    parts_->tableRegistration = listenTo(*newTable);
}

// The new base is counted before the old one is let go, which may be all that keeps it.
void VDBViewRep::baseView(VDBViewRep* newBase) {
    VDBViewRep* old = base();
    if (newBase == old || (newBase != nullptr && newBase->standsOn(this))) {
        return;
    }
    if (newBase != nullptr) {
        newBase->retain();
    }
    dropRows();
    if (old != nullptr) {
        old->deregisterNotification(parts_->baseRegistration);
    }
    parts_->baseRegistration.reset();
    parts_->base.set(newBase);
    if (old != nullptr) {
        old->release();
    }
    if (newBase != nullptr) {
        stackOn(newBase);
    }
}

void VDBViewRep::stackOn(VDBViewRep* newBase) {
    addParamsFrom(newBase);
    parts_->baseRegistration = listenTo(*newBase);
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

void VDBViewRep::setParam(const char* name, const char* value) {
    const LightweightString<char> text(value);
    parts_->params[LightweightString<char>(name)] = text;
}

void VDBViewRep::addParamsFrom(vekdb* from) {
    const unsigned params = from != nullptr ? from->get_num_params() : 0;
    for (unsigned i = 0; i < params; ++i) {
        setParam(from->get_param_name(i), from->get_param_text(i));
    }
}

void VDBViewRep::addParamsFrom(VDBViewRep* other) {
    if (other == nullptr || other == this) {
        return;
    }
    for (AssocListIter param(other->parts_->params); param; ++param) {
        setParam(param->name.c_str(), param->value.c_str());
    }
}

// Only a value without any text is marked. One that is merely empty has a text, so the entry
// made here stays empty.
void VDBViewRep::internRevision() {
    LightweightString<char>& revision = parts_->params[LightweightString<char>("VEKDB")];
    if (revision.c_str() == nullptr) {
        revision = "Rev 1";
    }
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
