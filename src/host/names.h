#pragma once

#include <cstddef>
#include <string_view>

#include <vekdb/host/lightweight_string.h>

/// Hash and equality of names without regard to case, for maps that own their names and are
/// asked with views.
struct NameHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view name) const;
    std::size_t operator()(const LightweightString<char>& name) const {
        return (*this)(name.view());
    }
};
struct NameEqual {
    using is_transparent = void;
    static std::string_view viewOf(std::string_view name) { return name; }
    static std::string_view viewOf(const LightweightString<char>& name) { return name.view(); }
    static bool same(std::string_view a, std::string_view b);
    template <class A, class B>
    bool operator()(const A& a, const B& b) const {
        return same(viewOf(a), viewOf(b));
    }
};
