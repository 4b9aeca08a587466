// What the host says about packs that break the rules.
#include "fmt/format.h"
#include "pack/frame/fp_control.hpp"
#include "tests/host/build_files.hpp"
#include "tests/host/sheet.hpp"

using namespace test;

namespace {

TEST(Watch, SaysWhatAPackDidWrong) {
  struct Case {
    const char* fault;
    const char* words;
  };
  const Case cases[] = {
    {"changes_a_record", "changed its argument 1"},
    {"modifies_an_argument", "changed its argument 1"},
    {"forgets_the_bracket", "left an evaluator frame open"},
    {"pops_too_often", "popped an evaluator frame that was not open"},
#if MATRIX_HAS_MXCSR
    {"rounds_upwards", "changed the floating-point control word"},
#endif
    {"returns_null", "gave no value"},
    {"returns_foreign_value", "gave a value that is not the host's"},
    {"forgets_a_part", "left a part of its result unwritten"},
    {"throws", "let an exception escape"},
  };
  for (const auto& [fault, words] : cases) {
    Sheet sheet;
    sheet.machine().care = efi::Care::elements;
    sheet.machine().add_pack(std::make_unique<worksheet::Pack>(tiny_pack(fault)));
    const bool of_pick = fault == std::string("forgets_a_part");
    EXPECT_EQ(sheet.brief(of_pick ? "pick([1], 0)" : "twice([1])"),
              fmt::format("error: {}: the pack {} (0, 0)", of_pick ? "pick" : "twice", words));
    EXPECT_EQ(sheet.machine().evaluator.depth(), 0u);
#if MATRIX_HAS_MXCSR
    EXPECT_EQ(_mm_getcsr() & 0x6000u, 0u) << "the control word is put right";
#endif
  }
}

}  // namespace
