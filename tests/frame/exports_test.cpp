// What the file of the library shows to the loader: read from its ELF tables.

#include <elf.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <map>
#include <set>

#include "support/library.h"

namespace {

using Names = std::set<std::string>;

class Elf {
 public:
  explicit Elf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    bytes.assign(std::istreambuf_iterator<char>(file), {});
    EXPECT_EQ(bytes.substr(0, SELFMAG), ELFMAG) << path;
    const auto header = At<Elf64_Ehdr>(0);
    for (int i = 0; i < header.e_shnum; ++i) {
      sections.push_back(
          At<Elf64_Shdr>(header.e_shoff + static_cast<Elf64_Off>(i) * header.e_shentsize));
    }
  }

  template <class Entry>
  std::vector<Entry> Table(const Elf64_Shdr& section) const {
    std::vector<Entry> entries;
    for (Elf64_Off at = 0; at + sizeof(Entry) <= section.sh_size; at += sizeof(Entry)) {
      entries.push_back(At<Entry>(section.sh_offset + at));
    }
    return entries;
  }

  std::vector<Elf64_Shdr> Sections(Elf64_Word type) const {
    std::vector<Elf64_Shdr> found;
    std::copy_if(sections.begin(), sections.end(), std::back_inserter(found),
                 [type](const Elf64_Shdr& section) { return section.sh_type == type; });
    return found;
  }

  // A name in the string table that belongs to a section.
  std::string Name(const Elf64_Shdr& section, Elf64_Xword offset) const {
    return bytes.data() + sections.at(section.sh_link).sh_offset + offset;
  }

  Names Dynamic(Elf64_Sxword tag) const {
    Names values;
    for (const Elf64_Shdr& section : Sections(SHT_DYNAMIC)) {
      for (const auto& entry : Table<Elf64_Dyn>(section)) {
        if (entry.d_tag == tag) {
          values.insert(Name(section, entry.d_un.d_val));
        }
      }
    }
    return values;
  }

  // The functions that an array of function pointers names; relocation fills the array at load.
  Names FunctionsIn(Elf64_Word arrayType) const {
    std::map<Elf64_Addr, std::string> functions;
    for (const Elf64_Shdr& section : Sections(SHT_SYMTAB)) {
      for (const auto& symbol : Table<Elf64_Sym>(section)) {
        if (ELF64_ST_TYPE(symbol.st_info) == STT_FUNC) {
          functions[symbol.st_value] = Name(section, symbol.st_name);
        }
      }
    }
    Names names;
    for (const Elf64_Shdr& array : Sections(arrayType)) {
      for (const Elf64_Rela& relocation : Relocations()) {
        if (relocation.r_offset >= array.sh_addr &&
            relocation.r_offset < array.sh_addr + array.sh_size) {
          EXPECT_EQ(ELF64_R_TYPE(relocation.r_info), static_cast<Elf64_Xword>(R_X86_64_RELATIVE));
          const auto found = functions.find(static_cast<Elf64_Addr>(relocation.r_addend));
          names.insert(found != functions.end() ? found->second : "a function without a name");
        }
      }
    }
    return names;
  }

  std::vector<Elf64_Rela> Relocations() const {
    std::vector<Elf64_Rela> all;
    for (const Elf64_Shdr& section : Sections(SHT_RELA)) {
      const auto some = Table<Elf64_Rela>(section);
      all.insert(all.end(), some.begin(), some.end());
    }
    return all;
  }

 private:
  template <class T>
  T At(Elf64_Off offset) const {
    T value{};
    if (offset + sizeof value > bytes.size()) {
      throw std::out_of_range("beyond the end of the library's file");
    }
    std::memcpy(&value, bytes.data() + offset, sizeof value);
    return value;
  }

  std::string bytes;
  std::vector<Elf64_Shdr> sections;
};

// What an instrumented build brings along: the sanitizers' own libraries and the functions that
// tell them of each source file. The rest is the library's own, and judged alike in every build.
bool IsOfASanitizer(const std::string& name) {
  const auto has = [&name](const char* part) { return name.find(part) != std::string::npos; };
  return std::string(WAVEFILTERS_SANITIZE) != "" &&
         (has("libasan") || has("libubsan") || has("liblsan") || has("libtsan") || has("_00099_") ||
          has("san.module_"));
}

Names WithoutSanitizers(Names names) {
  for (auto name = names.begin(); name != names.end();) {
    name = IsOfASanitizer(*name) ? names.erase(name) : std::next(name);
  }
  return names;
}

struct LibraryFile : testing::Test {
  Elf elf{support::LibraryPath()};
};

TEST_F(LibraryFile, ExportsTheThirteenEntryPointsAndNothingElse) {
  Names expected;
  for (const support::Kind& kind : support::Kinds) {
    expected.insert(kind.entry);
  }
  ASSERT_EQ(expected.size(), 13U);
  Names exported;
  for (const Elf64_Shdr& section : elf.Sections(SHT_DYNSYM)) {
    for (const auto& symbol : elf.Table<Elf64_Sym>(section)) {
      if (symbol.st_shndx != SHN_UNDEF && ELF64_ST_BIND(symbol.st_info) != STB_LOCAL) {
        exported.insert(elf.Name(section, symbol.st_name));
        EXPECT_EQ(ELF64_ST_TYPE(symbol.st_info), STT_FUNC) << elf.Name(section, symbol.st_name);
      }
    }
  }
  EXPECT_EQ(exported, expected);
}

TEST_F(LibraryFile, AnnouncesItselfAsVersionOne) {
  EXPECT_EQ(elf.Dynamic(DT_SONAME), Names{"libwavefilters.so.1"});
}

TEST_F(LibraryFile, NeedsTheStandardAndMathsLibrariesAlone) {
  const Names allowed{"libstdc++.so.6", "libm.so.6", "libgcc_s.so.1", "libc.so.6",
                      "ld-linux-x86-64.so.2"};
  const Names needed = WithoutSanitizers(elf.Dynamic(DT_NEEDED));
  for (const std::string& name : needed) {
    EXPECT_TRUE(allowed.count(name) == 1) << name;
  }
  EXPECT_EQ(needed.count("libc.so.6"), 1U);
}

TEST_F(LibraryFile, RunsNothingOfItsOwnAtLoadAndUnload) {
  EXPECT_EQ(WithoutSanitizers(elf.FunctionsIn(SHT_INIT_ARRAY)), Names{"frame_dummy"});
  EXPECT_EQ(WithoutSanitizers(elf.FunctionsIn(SHT_FINI_ARRAY)), Names{"__do_global_dtors_aux"});
  EXPECT_TRUE(elf.FunctionsIn(SHT_PREINIT_ARRAY).empty());
}

TEST_F(LibraryFile, ChoosesNoFunctionAtLoad) {
  for (const Elf64_Rela& relocation : elf.Relocations()) {
    EXPECT_NE(ELF64_R_TYPE(relocation.r_info), static_cast<Elf64_Xword>(R_X86_64_IRELATIVE));
  }
  for (const Elf64_Shdr& section : elf.Sections(SHT_SYMTAB)) {
    for (const auto& symbol : elf.Table<Elf64_Sym>(section)) {
      EXPECT_NE(ELF64_ST_TYPE(symbol.st_info), STT_GNU_IFUNC) << elf.Name(section, symbol.st_name);
    }
  }
}

TEST_F(LibraryFile, RegistersNothingForUnload) {
  for (const Elf64_Shdr& section : elf.Sections(SHT_DYNSYM)) {
    for (const auto& symbol : elf.Table<Elf64_Sym>(section)) {
      const std::string name = elf.Name(section, symbol.st_name);
      EXPECT_NE(name, "__cxa_atexit");
      EXPECT_NE(name, "__cxa_thread_atexit");
      EXPECT_NE(name, "atexit");
    }
  }
}

}  // namespace
