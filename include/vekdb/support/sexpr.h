#pragma once

#include <cstdint>

#include <vekdb/host/visibility.h>
#include <vekdb/vdb_base.h>

class GrowString;

/// S-expressions: singly linked lists of elements that print themselves. A view holds its field
/// list as one: a list of references to columns, printed as "(Reel Scene)".
///
/// A list owns its cells and their elements; destroying its head destroys all of it. The empty
/// list is a null pointer. Not locked: one thread at a time.
class VEKDB_PUBLIC SExprElt {
public:
    /// The kinds of elements.
    enum : std::int32_t { columnReference = 0, list = 1, anOperator = 2 };

    /// Of one of the kinds above.
    explicit SExprElt(std::int32_t kindOfElement) noexcept : kind(kindOfElement) {}
    SExprElt(const SExprElt&) = delete;
    SExprElt& operator=(const SExprElt&) = delete;
    virtual ~SExprElt() = default;

    /// Appends the element's text.
    virtual void asString(GrowString& out) const = 0;

    std::int32_t kind;  ///< which class it is of
};

/// One cell of a list, an element of lists itself.
class VEKDB_PUBLIC SExpr : public SExprElt {
public:
    /// Takes over the element and the rest of the list; either may be null.
    explicit SExpr(SExprElt* elementOfCell = nullptr, SExpr* rest = nullptr) noexcept
        : SExprElt(list), element(elementOfCell), next(rest) {}
    ~SExpr() override;

    /// Turns the chain round in place; the new head. A null list stays null.
    static SExpr* reverse(SExpr* head) noexcept;
    SExpr* reverse() noexcept { return reverse(this); }

    /// Appends the elements' texts in parentheses, with a blank between them; "()" for null.
    static void print(const SExpr* head, GrowString& out);
    void asString(GrowString& out) const override { print(this, out); }

    SExprElt* element;  ///< owned, may be null
    SExpr* next;        ///< the rest of the list, owned; null for the last cell
};

/// A reference to one column of a table or view, which it does not own. It loses its source,
/// and prints "voidref", when that is destroyed.
class VEKDB_PUBLIC SExprRef : public SExprElt {
public:
    /// Refers to a column by its position in the source, which may be null.
    SExprRef(VDBBase* source, std::uint32_t columnOfSource) noexcept
        : SExprElt(columnReference), column(columnOfSource), source_(source) {}

    /// The source, null for none and where it went.
    VDBBase* table() const noexcept { return source_.get(); }
    /// Appends the column's name as it is now.
    void asString(GrowString& out) const override;

    std::uint32_t column;  ///< its position

private:
    SourceRef<VDBBase> source_;
};

/// Stands for an operator of a condition. Conditions are not there yet, so nothing makes one.
class VEKDB_PUBLIC SExprOperator : public SExprElt {
public:
    SExprOperator() noexcept : SExprElt(anOperator) {}
    void asString(GrowString& out) const override;
};

/// Walks the cells of a list. It starts before the first one, and a step from the last one
/// gives null, from which the next step starts again:
///     for (++it; it.current != nullptr; ++it)
struct VEKDB_PUBLIC SExprIterator {
    /// Stands before the first cell. The list outlives it.
    explicit SExprIterator(SExpr* headOfList) noexcept : head(headOfList) {}

    /// To the next cell.
    SExprIterator& operator++() noexcept {
        current = current != nullptr ? current->next : head;
        return *this;
    }

    SExpr* head;               ///< of the list, null for the empty one
    SExpr* current = nullptr;  ///< the cell it stands on
};
