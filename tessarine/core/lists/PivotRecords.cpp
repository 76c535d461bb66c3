#include <tessarine/core/lists/PivotRecords.h>

#include <array>
#include <bit>
#include <cmath>
#include <functional>
#include <limits>
#include <string_view>
#include <utility>

#include <boost/unordered/unordered_flat_map.hpp>

namespace tessarine {

struct TPivotColumn::TIndex {
  struct THash {
    size_t operator()(std::u16string_view AText) const { return std::hash<std::u16string_view>()(AText); }
  };
  // A text that was asked for lately, by its block: the texts of a sheet are often shared.
  struct TRecent {
    const detail::TTextBlock* Block = nullptr;
    uint64_t Word = 0;
  };

  TRecent& RecentOf(const detail::TTextBlock* ABlock) {
    return Recent[(reinterpret_cast<uintptr_t>(ABlock) * 0x9E3779B97F4A7C15u) >> 56];
  }

  boost::unordered_flat_map<std::u16string_view, uint64_t, THash> Texts;  // views into the items' own texts
  std::array<TRecent, 256> Recent;  // of blocks that items hold, so an address never stands for another text
  std::array<uint64_t, 2> Booleans{};
  std::array<uint64_t, 16> Errors{};
};

TPivotColumn::TPivotColumn() : FItems(1) {}
TPivotColumn::~TPivotColumn() = default;
TPivotColumn::TPivotColumn(TPivotColumn&&) noexcept = default;
TPivotColumn& TPivotColumn::operator=(TPivotColumn&&) noexcept = default;

double TPivotColumn::NumberOf(uint64_t AWord) { return std::bit_cast<double>(AWord); }

uint64_t TPivotColumn::WordOf(double ANumber) {
  return std::bit_cast<uint64_t>(std::isnan(ANumber) ? std::numeric_limits<double>::quiet_NaN() : ANumber);
}

void TPivotColumn::Clear() {
  FWords.clear();
  FItems.resize(1);
  FIndex = nullptr;
}

uint64_t TPivotColumn::AddItem(TCellValue AValue) {
  FItems.push_back(std::move(AValue));
  return kFirstItem + static_cast<uint32_t>(FItems.size() - 1);
}

uint64_t TPivotColumn::Intern(const TValueView& AValue) {
  if (AValue.Kind == cvkNumber) return WordOf(AValue.Number);
  if (AValue.Kind == cvkEmpty) return kFirstItem;
  if (!FIndex) FIndex = std::make_unique<TIndex>();
  if (AValue.Kind == cvkBoolean || AValue.Kind == cvkError) {
    uint64_t& word = AValue.Kind == cvkBoolean ? FIndex->Booleans[AValue.BooleanValue ? 1 : 0]
                                               : FIndex->Errors[static_cast<size_t>(AValue.ErrorCode) % 16];
    if (word == 0) word = AddItem(TCellValue::FromView(AValue));
    return word;
  }
  if (AValue.Kind == cvkFormula) return AddItem(TCellValue::FromView(AValue));
  TIndex::TRecent& recent = FIndex->RecentOf(AValue.Block);
  if (recent.Word != 0 && recent.Block == AValue.Block) return recent.Word;
  if (const auto found = FIndex->Texts.find(AValue.Text()); found != FIndex->Texts.end()) {
    if (FItems[ItemOf(found->second)].Text.Block() == AValue.Block) recent = {AValue.Block, found->second};
    return found->second;
  }
  const uint64_t word = AddItem(TCellValue::FromView(AValue));
  FIndex->Texts.emplace(FItems.back().Text.View(), word);
  recent = {AValue.Block, word};
  return word;
}

void TPivotRecords::Clear() {
  FCount = 0;
  FColumns.clear();
}

void TPivotRecords::SetCount(size_t ACount) {
  FCount = ACount;
  for (TPivotColumn& column : FColumns) {
    if (column.Words().size() > ACount) column.Resize(ACount);
  }
}

void TPivotRecords::Add(std::span<const TCellValue> AValues) {
  for (size_t field = 0; field < FColumns.size() && field < AValues.size(); ++field) {
    if (AValues[field].IsEmpty()) continue;
    TPivotColumn& column = FColumns[field];
    const uint64_t word = column.Intern(AValues[field].View());
    column.Resize(FCount + 1);
    column.SetWord(FCount, word);
  }
  ++FCount;
}

}  // namespace tessarine
