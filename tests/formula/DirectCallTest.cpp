#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/formula/FunctionTable.h>
#include <tessarine/formula/detail/Interpreter.h>
#include <tessarine/formula/detail/Program.h>
#include <tessarine/platform/Unicode.h>

#include "../support/SheetFixture.h"

namespace tessarine::testing {
namespace {

constexpr int32_t kDataRows = 12;  // of columns A to D on both sheets
constexpr int32_t kCalls = 60;     // rows of column F

/// A text with the rows between "~" moved down.
std::string Moved(const std::string& AText, int32_t ARows) {
  std::string text;
  for (size_t at = 0; at < AText.size(); ++at) {
    if (AText[at] != '~') {
      text += AText[at];
      continue;
    }
    const size_t end = AText.find('~', at + 1);
    text += std::to_string(std::stoi(AText.substr(at + 1, end - at - 1)) + ARows);
    at = end;
  }
  return text;
}

/// Calls of any function over cells, ranges, literals and operators.
class TCallMaker {
 public:
  explicit TCallMaker(uint32_t ASeed) : FRandom(ASeed) {}

  int32_t Below(int32_t ALimit) { return static_cast<int32_t>(FRandom() % static_cast<uint32_t>(ALimit)); }

  template <size_t N>
  std::string OneOf(const char* const (&AChoices)[N]) {
    return AChoices[Below(N)];
  }

  std::string Content() {
    return OneOf({"_",       "'",      "abc-7", "'12.5",     "#,##0.00", "TRUE",  "#N/A",  "0",
                  "1",       "2",      "3",     "-4",        "0.25",     "0.975", "17",    "45000",
                  "45731.5", "1E+300", "=1+1",  "=\"x\"&A1", "=1/0",     "=F3",   "=A2:A3"});
  }

  /// A call for row ARow of column F, which it may read itself.
  std::string Call(const std::vector<std::u16string_view>& ANames, const std::vector<std::pair<int, int>>& ACounts,
                   int32_t ARow) {
    FRow = ARow;
    const auto at = static_cast<size_t>(Below(static_cast<int32_t>(ANames.size())));
    const auto [least, most] = ACounts[at];
    std::string text = "=" + Utf16ToUtf8(ANames[at]) + "(";
    for (int i = least + Below(most - least + 1); i > 0; --i) text += Argument() + (i > 1 ? "," : "");
    return text + ")";
  }

 private:
  std::string Cell() {
    if (Below(9) == 0) return "F~" + std::to_string(Below(4) ? 1 + Below(kCalls / 4) : FRow) + "~";
    const std::string row = std::to_string(1 + Below(kDataRows));
    return OneOf({"", "", "", "", "$", "Other!", "'Other'!$", "Nope!"}) + OneOf({"A", "B", "C", "D", "E"}) +
           (Below(2) ? "$" + row : "~" + row + "~");
  }

  std::string Range() {
    return OneOf(
        {"A~1~:A~6~", "$A$1:$B$4", "D9:B2", "Other!A1:C3", "C:C", "2:3", "F~1~:F~9~", "Nope!A1:A2", "A1:F~70~"});
  }

  std::string Argument() {
    switch (Below(16)) {
      case 0:
      case 1:
      case 2: return OneOf({"1", "2", "0.5", "45000", "\"abc\"", "\"-\"", "\"0.00\"", "TRUE", "FALSE", "#N/A", "3"});
      case 3:
      case 4: return Range();
      case 5: return Cell() + OneOf({"+", "-", "*", "/", "^"}) + Cell();
      case 6: return OneOf({"-", "+", "--", "+-"}) + Cell();
      case 7: return OneOf({"-5", "1/3", "-Other!B2*2", "LEN(A1)", "{1,2;3,4}", "A1&B1", "A1>B1", "@A1:A9", "-A1:A2"});
      default: return Cell();
    }
  }

  std::mt19937 FRandom;
  int32_t FRow = 1;
};

/// The functions that are mappings from arguments to a value, and how many arguments they are tried with.
void FindFunctions(std::vector<std::u16string_view>& ANames, std::vector<std::pair<int, int>>& ACounts) {
  for (const TFunctionDef* row : AllFunctions()) {
    const auto program = detail::CompileText(u"=" + std::u16string(row->Name) + u"(1)");
    if (!row->Body || program->HasOrderEffects) continue;
    const int least = std::max<int>(row->MinArgs, 1);
    ANames.push_back(row->Name);
    ACounts.emplace_back(least, std::max(least, std::min<int>(row->MaxArgs < 0 ? least + 3 : row->MaxArgs, 7)));
  }
}

void Compare(TSheetFixture& ALeft, TSheetFixture& ARight, uint32_t ASeed) {
  for (int32_t row = 1; row <= kCalls; ++row) {
    const TCellValue left = ALeft.Sheet().GetEffectiveValue({6, row});
    const TCellValue right = ARight.Sheet().GetEffectiveValue({6, row});
    ASSERT_EQ(left, right) << "seed " << ASeed << ", " << NotationOf(ALeft.Sheet().GetCellAt(6, row).Value) << ": "
                           << NotationOf(left) << " against " << NotationOf(right);
  }
  EXPECT_EQ(ALeft.Eval("=ROW()&\",\"&COLUMN()"), ARight.Eval("=ROW()&\",\"&COLUMN()")) << ASeed;
}

/// How many of the calls, those of one cell alone left out, have been evaluated directly.
int CountTaken(TSheetFixture& AFixture) {
  int taken = 0;
  for (int32_t row = 1; row <= kCalls; ++row) {
    const auto* program =
        static_cast<const detail::TProgram*>(AFixture.Sheet().Store().FindRecord(6, row)->Template->Program.get());
    taken += program && !program->CallArgs.empty() ? 1 : 0;
  }
  return taken;
}

TEST(DirectCall, GivesWhatTheFrameOfAReaderGives) {
  std::vector<std::u16string_view> names;
  std::vector<std::pair<int, int>> counts;
  FindFunctions(names, counts);
  int taken = 0;
  for (uint32_t seed = 1; seed <= 300; ++seed) {
    TCallMaker maker(seed);
    TSheetFixture direct;
    TSheetFixture plain;
    plain.Evaluator.Options().DirectCalls = false;
    direct.Evaluator.Options().FastOrder = plain.Evaluator.Options().FastOrder = seed % 3 != 0;
    const auto set = [&](const std::string& AAddress, const std::string& AContent) {
      direct.Set(AAddress, AContent);
      plain.Set(AAddress, AContent);
    };
    for (const char* sheet : {"", "Other!"}) {
      for (int32_t i = 0; i < 4 * kDataRows; ++i) {
        std::string content = maker.Content();
        if (content == "=A2:A3" && seed % 4 != 0) content = "7";  // a block that spills turns direct calls away
        set(sheet + std::string(1, static_cast<char>('A' + i % 4)) + std::to_string(1 + i / 4), content);
      }
    }
    for (int32_t row = 1; row < kCalls; row += 2) {  // pairs, as if filled down
      const std::string call = maker.Call(names, counts, row);
      for (const int32_t shift : {0, 1}) set("F" + std::to_string(row + shift), Moved(call, shift));
    }
    for (int round = 0; round < 5; ++round) {
      for (int i = 0; i < kCalls / 3; ++i) {
        const int32_t row = 1 + maker.Below(kCalls);
        direct.Evaluator.EvaluateCell(0, 6, row);
        plain.Evaluator.EvaluateCell(0, 6, row);
      }
      ASSERT_NO_FATAL_FAILURE(Compare(direct, plain, seed));
      const int32_t data = 1 + maker.Below(kDataRows);
      for (const char* col : {"A", "B", "C"}) set(col + std::to_string(data), maker.Content());
      for (TSheetFixture* fixture : {&direct, &plain}) {
        if (round == 1) fixture->Evaluator.RecalculateAll();
        if (round == 3) fixture->Evaluator.NotifyCellChanged(0, 2, data);
      }
      ASSERT_NO_FATAL_FAILURE(Compare(direct, plain, seed));
    }
    EXPECT_EQ(CountTaken(plain), 0);
    taken += CountTaken(direct);
  }
  EXPECT_GT(taken, 4000);
}

}  // namespace
}  // namespace tessarine::testing
