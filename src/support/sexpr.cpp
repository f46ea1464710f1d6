#include <vekdb/support/sexpr.h>

#include <vekdb/host/grow_string.h>

// Cells behind this one are taken off one at a time: a destructor that called the next cell's
// would need a stack as deep as the list is long.
SExpr::~SExpr() {
    delete element;
    while (next != nullptr) {
        SExpr* cell = next;
        next = cell->next;
        cell->next = nullptr;
        delete cell;
    }
}

SExpr* SExpr::reverse(SExpr* head) noexcept {
    SExpr* reversed = nullptr;
    while (head != nullptr) {
        SExpr* rest = head->next;
        head->next = reversed;
        reversed = head;
        head = rest;
    }
    return reversed;
}

void SExpr::print(const SExpr* head, GrowString& out) {
    out.append('(');
    for (const SExpr* cell = head; cell != nullptr; cell = cell->next) {
        if (cell->element != nullptr) {
            cell->element->asString(out);
        }
        if (cell->next != nullptr) {
            out.append(' ');
        }
    }
    out.append(')');
}

void SExprRef::asString(GrowString& out) const {
    const VDBBase* source = table();
    out.append(source != nullptr ? source->get_fieldname(column) : "voidref");
}

void SExprOperator::asString(GrowString& out) const {
    out.append("op ");
}
