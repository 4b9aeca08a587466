// What the host says about packs that break the rules.
#include "pack/frame/fp_control.hpp"
#include "tests/host/sheet.hpp"

using namespace test;

namespace {

TEST(Watch, SaysWhatAPackDidWrong) {
  Sheet sheet;
  sheet.machine().care = efi::Care::elements;
  sheet.machine().add_pack(std::make_unique<worksheet::Pack>(HOSTILE_PACK));
  struct Case {
    const char* call;
    const char* words;
  };
  const Case cases[] = {
    {"changes_record([1])", "changes_record: the pack changed its argument 1"},
    {"changes_element([1])", "changes_element: the pack changed its argument 1"},
    {"leaves_frame([1])", "leaves_frame: the pack left an evaluator frame open"},
    {"pops_too_often(1)", "pops_too_often: the pack popped an evaluator frame that was not open"},
#if MATRIX_HAS_MXCSR
    {"changes_control(1)", "changes_control: the pack changed the floating-point control word"},
#endif
    {"gives_nothing([1])", "gives_nothing: the pack gave no value"},
    {"gives_foreign_value(1)", "gives_foreign_value: the pack gave a value that is not the host's"},
    {"forgets_imaginary_part(1)",
     "forgets_imaginary_part: the pack left a part of its result unwritten"},
    {"throws(1)", "throws: the pack let an exception escape"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(sheet.brief(c.call), std::string("error: ") + c.words + " (0, 0)");
    EXPECT_EQ(sheet.machine().evaluator.depth(), 0u);
  }
#if MATRIX_HAS_MXCSR
  EXPECT_EQ(_mm_getcsr() & 0x8000u, 0u) << "the control word is put right";
#endif
}

TEST(Watch, AFunctionValueIsAppliedWithTheRightNumberOfArguments) {
  Sheet sheet;
  sheet.machine().add_pack(std::make_unique<worksheet::Pack>(HOSTILE_PACK));
  EXPECT_EQ(sheet.brief("f(x) = x + 1\napplies_to_one(f)"), "2");
  EXPECT_EQ(sheet.brief("g(x, y) = x\napplies_to_one(g)"),
            "error: g takes 2 arguments, not 1 (0, 0)");
  EXPECT_EQ(sheet.brief("applies_to_one(3)"), "error: must be function (0, 0)");
}

// The rules that the watch checks hold for every row of the pack of this build.
TEST(Watch, ThePackOfThisBuildKeepsTheRules) {
  Sheet sheet;
  sheet.machine().care = efi::Care::elements;
  sheet.run("f(i, j) = i + 2*j");
  for (const worksheet::Row& row : sheet.machine().packs[0]->rows()) {
    for (const char* argument : {"[4, 1; 2, 3]", "[2; 1]", "2", "[1i, 2; 3, 4]", "f", "\"t\"",
                                 "[0/0, 1; 2, 3]", "lean([0, 0; 0, 0])"}) {
      std::string call = row.name + "(" + argument;
      for (std::size_t k = 1; k < row.argument_count; ++k) call += k == 1 ? ", [2; 1]" : ", 1";
      EXPECT_EQ(sheet.brief(call + ")").find("the pack"), std::string::npos) << call;
    }
  }
}

}  // namespace
