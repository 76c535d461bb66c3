#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <tessarine/core/lists/SheetTables.h>
#include <tessarine/formula/detail/Interpreter.h>

#include "../support/SheetFixture.h"

namespace tessarine::testing {
namespace {

constexpr int kCols = 5;
constexpr int kRows = 8;

/// Random formulas over A1:E8 of two sheets.
class TFormulaMaker {
 public:
  explicit TFormulaMaker(uint32_t ASeed, bool AMaySpill) : FRandom(ASeed), FMaySpill(AMaySpill) {}

  int Below(int ALimit) { return static_cast<int>(FRandom() % static_cast<uint32_t>(ALimit)); }

  std::string Content() {
    switch (Below(10)) {
      case 0: return "_";
      case 1: return "text";
      case 2: return Below(2) ? "TRUE" : "#DIV/0!";
      case 3: return "'" + std::to_string(Below(9));
      case 4: return std::to_string(Below(100) - 20);
      default: return "=" + Expression(3);
    }
  }

 private:
  template <size_t N>
  const char* OneOf(const char* const (&AChoices)[N]) {
    return AChoices[Below(static_cast<int>(N))];
  }

  std::string Cell() {
    std::string text = Below(8) == 0 ? "Other!" : "";
    if (Below(4) == 0) text += "$";
    text += static_cast<char>('A' + Below(kCols));
    if (Below(4) == 0) text += "$";
    return text + std::to_string(1 + Below(kRows));
  }

  std::string Range() {
    if (Below(12) == 0) return OneOf({"A:A", "$2:$3", "B:C", "Nope!A1:A2"});
    const std::string first = Cell();
    std::string second = Cell();
    if (const size_t mark = second.find('!'); mark != std::string::npos) second.erase(0, mark + 1);
    return first + ":" + second;
  }

  std::string Argument(int ADepth) {
    switch (Below(6)) {
      case 0: return Range();
      case 1: return "@" + Range();
      case 2: return "-" + Range();
      case 3: return "--(" + Range() + OneOf({"=", "<>", ">", "<="}) + Expression(ADepth - 1) + ")";
      case 4: return OneOf({"Items", "Near", "Items[b]", "{1,2;3,4}", "PI()"});
      default: return Expression(ADepth - 1);
    }
  }

  std::string Expression(int ADepth) {
    if (ADepth <= 0) return Below(3) == 0 ? OneOf({"1", "2.5", "\"x\"", "TRUE", "\"7\"", "ROW()", "COLUMN()"}) : Cell();
    switch (Below(16)) {
      case 0: return Cell();
      case 1: return Range();
      case 2: return OneOf({"-", "+", "--", "@"}) + Expression(ADepth - 1);
      case 3:
      case 4: return "(" + Expression(ADepth - 1) + OneOf({"+", "-", "*", "/", "^"}) + Expression(ADepth - 1) + ")";
      case 5: return "(" + Expression(ADepth - 1) + OneOf({"&", "=", "<", ">=", "<>"}) + Expression(ADepth - 1) + ")";
      case 6: return "IF(" + Expression(ADepth - 1) + "," + Expression(ADepth - 1) + "," + Expression(ADepth - 1) + ")";
      case 7: return "IFERROR(" + Expression(ADepth - 1) + "," + Expression(ADepth - 1) + ")";
      case 8: return "CHOOSE(" + Cell() + "," + Expression(ADepth - 1) + "," + Expression(ADepth - 1) + ")";
      case 9: return "INDIRECT(\"" + Range() + "\")";
      case 10:
        if (FMaySpill) return "OFFSET(" + Cell() + "," + Cell() + ",1,2,2)";
        return "SUM(OFFSET(" + Cell() + "," + Cell() + ",1,2,2))";
      case 11: return OneOf({"Near", "Items[@b]", "{3,1}", "Loop", "ROW()", "NoSuch"});
      case 12: return std::string(OneOf({"HSTACK", "VSTACK"})) + "(" + Argument(ADepth) + "," + Argument(ADepth) + ")";
      case 13: return std::string(OneOf({"TRANSPOSE", "UNIQUE", "SORT"})) + "(" + Range() + ")";
      default:
        return std::string(OneOf({"SUM", "COUNTA", "MAX", "AND", "SUMPRODUCT", "MATCH"})) + "(" + Argument(ADepth) +
               "," + Argument(ADepth) + ")";
    }
  }

  std::mt19937 FRandom;
  bool FMaySpill;
};

struct TVariant {
  const char* Name;
  detail::TEvaluationOptions Options;
};

void Fill(TSheetFixture& AFixture, uint32_t ASeed, bool AMaySpill) {
  TFormulaMaker maker(ASeed, AMaySpill);
  AFixture.Workbook.AddSheet("Other");
  for (int sheet = 0; sheet < 2; ++sheet) {
    for (int col = 0; col < kCols; ++col) {
      for (int row = 1; row <= kRows; ++row) {
        const std::string at = (sheet ? "Other!" : "") + std::string(1, static_cast<char>('A' + col));
        std::string content = maker.Content();
        if (!AMaySpill && content.starts_with("=")) content = "=0+(" + content.substr(1) + ")";
        AFixture.Set(at + std::to_string(row), content);
      }
    }
  }
  AFixture.Workbook.SetNamedFormula("Near", "=A1+@B1:B8");
  AFixture.Workbook.SetNamedFormula("Loop", "=IFERROR(C3,Loop)");
  AFixture.Sheet().Tables().Add(u"Items", {2, 2, 3, 5}).SetColumnNames({u"a", u"b"});
}

/// All values of both sheets, their bounds and the evaluation position.
std::string Dump(TSheetFixture& AFixture) {
  std::string text;
  for (int sheet = 0; sheet < 2; ++sheet) {
    for (int row = 1; row <= kRows + 3; ++row) {
      for (int col = 1; col <= kCols + 3; ++col) {
        const TCell cell = AFixture.Sheet(sheet).GetCellAt(col, row);
        text += NotationOf(AFixture.Sheet(sheet).GetEffectiveValue({col, row}));
        text += cell.Value.Kind == cvkFormula && !cell.HasCachedValue ? "? " : " ";
      }
      text += "\n";
    }
    text +=
        std::to_string(AFixture.Sheet(sheet).UsedMaxCol()) + "," + std::to_string(AFixture.Sheet(sheet).UsedMaxRow());
  }
  return text + AFixture.Eval("=ROW()&\",\"&COLUMN()");
}

/// What a workbook comes to when some of its cells are evaluated one by one, then some are changed, then evaluated.
std::string Played(uint32_t ASeed, bool AMaySpill, const detail::TEvaluationOptions& AOptions, bool ARecalculate) {
  TSheetFixture fixture;
  fixture.Evaluator.Options() = AOptions;
  Fill(fixture, ASeed, AMaySpill);
  TFormulaMaker maker(ASeed + 1, AMaySpill);
  std::string text;
  for (int round = 0; round < 3; ++round) {
    for (int i = 0; i < 6; ++i) {
      const int sheet = maker.Below(2);
      fixture.Evaluator.EvaluateCell(sheet, 1 + maker.Below(kCols), 1 + maker.Below(kRows));
    }
    text += Dump(fixture);
    if (ARecalculate) fixture.Evaluator.RecalculateAll();
    const int col = 1 + maker.Below(kCols);
    const int row = 1 + maker.Below(kRows);
    fixture.Sheet().SetValue({col, row}, TCellValue::FromNumber(maker.Below(50)));
    if (ARecalculate) fixture.Evaluator.NotifyCellChanged(0, col, row);
    text += Dump(fixture);
  }
  return text;
}

std::string FormulasOf(uint32_t ASeed, bool AMaySpill) {
  TSheetFixture fixture;
  Fill(fixture, ASeed, AMaySpill);
  std::string text;
  for (int sheet = 0; sheet < 2; ++sheet) {
    for (int col = 1; col <= kCols; ++col) {
      for (int row = 1; row <= kRows; ++row) text += NotationOf(fixture.Sheet(sheet).GetCellAt(col, row).Value) + "\n";
    }
  }
  return text;
}

detail::TEvaluationOptions PlainOptions() {
  detail::TEvaluationOptions options;
  options.ReusePrograms = options.RangeViews = options.RangeIndexes = false;
  options.BlockEvaluation = options.FastOrder = false;
  return options;
}

TEST(EvaluatorJudge, FastPathsGiveTheValuesOfThePlainOnes) {
  detail::TEvaluationOptions noViews;
  noViews.RangeViews = false;
  detail::TEvaluationOptions noPrograms;
  noPrograms.ReusePrograms = false;
  const TVariant variants[] = {{"all on", {}}, {"no views", noViews}, {"no programs", noPrograms}};
  for (uint32_t seed = 1; seed <= 250; ++seed) {
    for (const bool recalculate : {false, true}) {
      const std::string expected = Played(seed, true, PlainOptions(), recalculate);
      for (const TVariant& variant : variants) {
        ASSERT_EQ(Played(seed, true, variant.Options, recalculate), expected)
            << variant.Name << ", seed " << seed << "\n"
            << FormulasOf(seed, true);
      }
    }
  }
}

TEST(EvaluatorJudge, WaitingReadersGiveTheValuesOfNestedOnes) {
  detail::TEvaluationOptions waiting;
  waiting.NestPulls = false;
  detail::TEvaluationOptions waitingPlain = PlainOptions();
  waitingPlain.NestPulls = false;
  for (uint32_t seed = 1001; seed <= 1400; ++seed) {
    const std::string expected = Played(seed, false, {}, false);
    ASSERT_EQ(Played(seed, false, waiting, false), expected) << "seed " << seed << "\n" << FormulasOf(seed, false);
    ASSERT_EQ(Played(seed, false, waitingPlain, false), expected) << "seed " << seed << "\n" << FormulasOf(seed, false);
  }
}

}  // namespace
}  // namespace tessarine::testing
