// What libmatrix.so shows, and what it asks for.
#include <gtest/gtest.h>

#include <cstdio>
#include <regex>
#include <set>
#include <string>

#include "pack/exports.hpp"
#include "tests/support/matrix_library.hpp"
#include "tests/support/sanitized.hpp"

namespace {

// Demangled names of the library's dynamic symbols, without versions.
std::set<std::string> dynamic_symbols(const std::string& which) {
  std::set<std::string> symbols;
  std::FILE* nm = popen(("nm -D -C " + which + " " + test::kMatrixLibrary).c_str(), "r");
  char line[512];
  // An address or blanks, a letter, the name.
  while (std::fgets(line, sizeof line, nm) != nullptr) {
    const std::string text(line);
    const std::size_t name = text.find_first_of("ABCDRTUVWw", text.find_first_of(' ')) + 2;
    symbols.insert(text.substr(name, text.find_first_of("@\n", name) - name));
  }
  pclose(nm);
  return symbols;
}

TEST(Exports, AreTheDocumentedOnes) {
  std::set<std::string> expected = {"theEfi",
                                    "numFuncs",
                                    "ORIGINLIST",
                                    "TOLLIST",
                                    "identifier_TOL",
                                    "string_TOL",
                                    "DllRegisterServer",
                                    "DllUnregisterServer",
                                    "identity(EfiCallContext*, int)",
                                    "identity(EfiCallContext*, aComplex*)",
                                    "inv(EfiCallContext*, Anyval*)",
                                    "inv(EfiCallContext*, aMatrix*)",
                                    "cinv(EfiCallContext*, aMatrix*, aMatrix**, bool)",
                                    "eigenvals(EfiCallContext*, Anyval*, Anyval*)",
                                    "eigenvals(EfiCallContext*, aMatrix*, double)",
                                    "eigenvecs(EfiCallContext*, Anyval*)",
                                    "eigenvecs(EfiCallContext*, aMatrix*)"};
  for (int k = 0; k < numFuncs; ++k)
    if (theEfi[k].name != Transpose_sString && theEfi[k].name != diag_sString)
      expected.insert(std::string("string_") + theEfi[k].name->text);
  EXPECT_EQ(dynamic_symbols("--defined-only"), expected);
}

// There where a build counts what is executed; such a pack also writes its counts to files.
extern "C" [[gnu::weak]] void __gcov_init(void*);

// What the pack cannot name it cannot do: start threads, open files, print, install handlers. All
// memory is the host's operator new, which the tests let fail.
TEST(Imports, AreServicesMemoryAndUnwinding) {
  if (test::kSanitized) GTEST_SKIP() << "the sanitizers call more";
  if (__gcov_init != nullptr) GTEST_SKIP() << "this build counts what is executed";
  const std::regex allowed(
      "(Any|Mat)_.*|.*_s(String|UnIdent)|sError_OutOfMemory"                   // The host's data.
      "|(a[A-Z]\\w*::mk|\\w+)\\(.*(EfiCallContext|IqlAllocator|aMatrix)\\*.*"  // Its services.
      "|(Unr|R)egisterEfiFunctionPack\\(.*|nonint\\(double\\)"
      "|operator (new|delete).*|std::.*|(typeinfo( name)?|vtable) for .*"
      "|__cxa_.*|_Unwind_.*|__gxx_.*|_ITM_.*|__gmon_start__|__stack_chk_fail|__getauxval"
      "|mem(cpy|move|set|cmp)|strlen|floor|trunc|sqrt|fabs|copysign|fe[a-z]+");
  const std::set<std::string> imports = dynamic_symbols("--undefined-only");
  EXPECT_TRUE(imports.contains("sError_OutOfMemory"));
  for (const std::string& name : imports) EXPECT_TRUE(std::regex_match(name, allowed)) << name;
}

}  // namespace
