#include <memory>

#include <vekdb/record.h>
#include "views/view_parts.h"

void VDBViewRep::set_tag(unsigned row, int value) {
    index().setTag(static_cast<int>(row), value != 0);
}

void VDBViewRep::invert_tag(unsigned row) {
    index().setTag(static_cast<int>(row), get_tag(row) == 0);
}

unsigned VDBViewRep::get_tag(unsigned row) const {
    return index().tag(static_cast<int>(row));
}

void VDBViewRep::set_all_tags(int value) {
    tagAll(value != 0);
}

void VDBViewRep::invert_all_tags() {
    invertAllTags();
}

unsigned VDBViewRep::get_num_tags() const {
    return countTags();
}

unsigned VDBViewRep::tag_matching_records(int) {
    return tagMatches(0);
}

unsigned VDBViewRep::tag_all_different(int field) {
    const Pin pin(*this);
    tagDuplicates(field);
    invertAllTags();
    return get_num_tags();
}

bool VDBViewRep::tag(int row) {
    return index().tag(row) != 0;
}

bool VDBViewRep::notTagged(int row) {
    return !tag(row);
}

void VDBViewRep::tagAll(bool value) {
    if (source() != nullptr) {
        index().tagAll(value);
    }
}

void VDBViewRep::invertAllTags() {
    if (source() != nullptr) {
        index().invertTags();
    }
}

unsigned VDBViewRep::countTags() const {
    return source() != nullptr ? index().countTags() : 0;
}

unsigned VDBViewRep::tagMatches(int keep) {
    const VDBBase* from = source();
    const int rows = from != nullptr ? index().backedCount() : 0;
    unsigned matches = 0;
    for (int i = 0; i < rows; ++i) {
        const bool matching = from->match_record(static_cast<int>(sourceRow(i))) != 0;
        if (matching || keep == 0) {
            set_tag(static_cast<unsigned>(i), matching);
        }
        matches += matching;
    }
    return matches;
}

unsigned VDBViewRep::tagDuplicatesOrdered(int field) {
    const auto text = [&](int row) {
        const dbrecord* record = (*this)[row];
        return record != nullptr ? record->get_field(static_cast<unsigned short>(field)) : nullptr;
    };
    const int rows = source() != nullptr ? rowCount() : 0;
    const char* groupText = rows > 0 ? text(0) : nullptr;
    unsigned duplicates = 0;
    for (int i = 1; i < rows; ++i) {
        const char* rowText = text(i);
        if (LightweightString<char>::icompare(rowText, groupText) != 0) {
            groupText = rowText;
            continue;
        }
        set_tag(static_cast<unsigned>(i), 1);
        ++duplicates;
    }
    return duplicates;
}

// The temporary lets go of this view, which ends it when nobody else holds it.
unsigned VDBViewRep::tagDuplicates(int field) {
    if (source() == nullptr) {
        return 0;
    }
    const Pin pin(*this);
    const auto ordered = std::make_unique<VDBViewRep>(table(), fieldSpecText());
    ordered->baseView(this);
    ordered->displayAllRecords();
    ordered->set_sortfield(field);
    ordered->sort(1, 0);
    const unsigned duplicates = ordered->tagDuplicatesOrdered(field);
    ordered->tagBaseFromTags();
    return duplicates;
}

void VDBViewRep::tagBaseFromTags() {
    VDBBase* to = source();
    const int rows = to != nullptr ? index().backedCount() : 0;
    for (int i = 0; i < rows; ++i) {
        to->set_tag(sourceRow(i), static_cast<int>(index().tag(i)));
    }
}

VDBViewRep* VDBViewRep::newTagSubview() {
    if (table() == nullptr) {
        return nullptr;
    }
    auto tagged = std::make_unique<VDBViewRep>(table(), fieldSpecText());
    tagged->baseView(this);
    tagged->displayTaggedRecordsAt(0);
    return tagged.release();
}
