#include <elf.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <string_view>
#include <vector>

// What protects the program as it is shipped is read off its own file. Builds with a sanitizer
// and builds for debugging are not what is shipped.
#if defined(__linux__) && defined(__x86_64__) && defined(NDEBUG)

namespace {

class Binary {
public:
    Binary() {
        std::ifstream file(VEK_PROGRAM, std::ios::binary);
        bytes_.assign(std::istreambuf_iterator<char>(file), {});
    }

    template <class T>
    T at(std::size_t offset) const {
        T value;
        std::memcpy(&value, bytes_.data() + offset, sizeof value);
        return value;
    }

    template <class T>
    std::vector<T> table(std::size_t offset, std::size_t count) const {
        std::vector<T> entries;
        for (std::size_t i = 0; i < count; ++i) entries.push_back(at<T>(offset + i * sizeof(T)));
        return entries;
    }

    Elf64_Ehdr header() const { return at<Elf64_Ehdr>(0); }
    std::vector<Elf64_Phdr> segments() const {
        return table<Elf64_Phdr>(header().e_phoff, header().e_phnum);
    }
    std::vector<Elf64_Shdr> sections() const {
        return table<Elf64_Shdr>(header().e_shoff, header().e_shnum);
    }
    const char* text(std::size_t offset) const { return bytes_.data() + offset; }

private:
    std::string bytes_;
};

const Binary& program() {
    static const Binary& binary = *new Binary;
    return binary;
}

std::vector<Elf64_Phdr> segmentsOf(Elf64_Word type) {
    std::vector<Elf64_Phdr> found;
    for (const Elf64_Phdr& segment : program().segments()) {
        if (segment.p_type == type) found.push_back(segment);
    }
    return found;
}

Elf64_Xword dynamicValue(Elf64_Sxword tag) {
    for (const Elf64_Phdr& segment : segmentsOf(PT_DYNAMIC)) {
        for (const Elf64_Dyn& entry :
             program().table<Elf64_Dyn>(segment.p_offset, segment.p_filesz / sizeof(Elf64_Dyn))) {
            if (entry.d_tag == tag) return entry.d_un.d_val;
        }
    }
    return 0;
}

struct Function {
    std::string_view name;
    std::string_view code;
    Elf64_Addr address;
};

// The functions that the program's table of symbols names.
std::vector<Function> functions() {
    std::vector<Function> found;
    auto sections = program().sections();
    for (const Elf64_Shdr& section : sections) {
        if (section.sh_type != SHT_SYMTAB) continue;
        std::size_t names = sections[section.sh_link].sh_offset;
        for (const Elf64_Sym& symbol :
             program().table<Elf64_Sym>(section.sh_offset, section.sh_size / sizeof(Elf64_Sym))) {
            bool isHere = symbol.st_shndx != SHN_UNDEF && symbol.st_shndx < sections.size();
            if (!isHere || ELF64_ST_TYPE(symbol.st_info) != STT_FUNC) continue;
            const Elf64_Shdr& home = sections[symbol.st_shndx];
            std::size_t place = symbol.st_value - home.sh_addr + home.sh_offset;
            found.push_back({program().text(names + symbol.st_name),
                             {program().text(place), symbol.st_size},
                             symbol.st_value});
        }
    }
    return found;
}

// Reads the word that guards the stack: a move or a comparison with what stands at fs:0x28.
bool readsStackGuard(std::string_view code) {
    using namespace std::string_view_literals;
    constexpr std::string_view place = "\x25\x28\0\0\0"sv;
    for (std::size_t at = code.find(place); at != code.npos; at = code.find(place, at + 1)) {
        if (at >= 4 && code.substr(at - 4, 2) == "\x64\x48"sv) return true;
    }
    return false;
}

// Calls a function that begins at one of these places, by a call that says how far away it is.
bool callsAny(const Function& function, const std::set<Elf64_Addr>& places) {
    constexpr std::size_t length = 5;
    for (std::size_t at = 0; at + length <= function.code.size(); ++at) {
        if (function.code[at] != '\xE8') continue;
        std::int32_t away = 0;
        std::memcpy(&away, function.code.data() + at + 1, sizeof away);
        const auto behind = static_cast<std::int64_t>(function.address + at + length);
        if (places.contains(static_cast<Elf64_Addr>(behind + away))) return true;
    }
    return false;
}

// Whether it is found in another library when the program begins. Its own code asks for it then.
bool isFromElsewhere(std::string_view name) {
    auto sections = program().sections();
    for (const Elf64_Shdr& section : sections) {
        if (section.sh_type != SHT_SYMTAB) continue;
        const std::size_t names = sections[section.sh_link].sh_offset;
        for (const Elf64_Sym& symbol :
             program().table<Elf64_Sym>(section.sh_offset, section.sh_size / sizeof(Elf64_Sym))) {
            const std::string_view known = program().text(names + symbol.st_name);
            if (symbol.st_shndx == SHN_UNDEF && known.find(name) != known.npos) return true;
        }
    }
    return false;
}

// How many functions whose names begin so call one whose name ends so.
std::size_t callers(std::string_view begin, std::string_view end) {
    const std::vector<Function> all = functions();
    std::set<Elf64_Addr> places;
    for (const Function& function : all) {
        if (function.name.ends_with(end)) places.insert(function.address);
    }
    return static_cast<std::size_t>(
        std::count_if(all.begin(), all.end(), [&](const Function& function) {
            return function.name.starts_with(begin) && callsAny(function, places);
        }));
}

}  // namespace

TEST(Hardening, TheProgramStandsAtAnAddressOfChance) {
    EXPECT_EQ(program().header().e_type, ET_DYN);
}

TEST(Hardening, WhatTheLinkerFilledInIsReadOnlyBeforeMainBegins) {
    EXPECT_EQ(segmentsOf(PT_GNU_RELRO).size(), 1u);
    EXPECT_NE(dynamicValue(DT_FLAGS_1) & DF_1_NOW, 0u);
}

TEST(Hardening, NeitherStackNorDataCanBeRun) {
    ASSERT_EQ(segmentsOf(PT_GNU_STACK).size(), 1u);
    EXPECT_EQ(segmentsOf(PT_GNU_STACK)[0].p_flags & PF_X, 0u);
    for (const Elf64_Phdr& segment : segmentsOf(PT_LOAD)) {
        EXPECT_NE(segment.p_flags & (PF_W | PF_X), Elf64_Word{PF_W | PF_X});
    }
}

TEST(Hardening, FunctionsOfTheProgramAndOfTheLibraryWatchTheStack) {
    std::size_t ofProgram = 0;
    std::size_t ofLibrary = 0;
    for (const Function& function : functions()) {
        if (!readsStackGuard(function.code)) continue;
        ofProgram += function.name.starts_with("_ZN3vek");
        ofLibrary +=
            function.name.starts_with("_ZN5vekdb") || function.name.starts_with("_ZN8TextFile");
    }
    EXPECT_GT(ofProgram, 0u);
    EXPECT_GT(ofLibrary, 0u);
}

TEST(Hardening, JumpsThatAreWorkedOutLandWhereFunctionsBegin) {
    std::size_t mains = 0;
    for (const Function& function : functions()) {
        if (function.name != "main") continue;
        ++mains;
        EXPECT_TRUE(function.code.starts_with("\xF3\x0F\x1E\xFA"));
    }
    EXPECT_EQ(mains, 1u);
}

// What is written into a room whose size the compiler knows is checked against it.
TEST(Hardening, WhatIsPrintedIntoRoomsOfKnownSizeIsChecked) {
    EXPECT_TRUE(callers("_ZN3vek", "snprintf_chk") > 0 || isFromElsewhere("snprintf_chk"));
}

TEST(Hardening, TheStandardLibraryChecksHowTheProgramAndItsFormatsUseIt) {
    constexpr std::string_view fail = "_ZSt21__glibcxx_assert_failPKciS0_S0_";
    EXPECT_TRUE(callers("_ZN3vek7formats", fail) > 0 || isFromElsewhere(fail));
}

#endif
