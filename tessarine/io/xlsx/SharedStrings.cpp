#include <tessarine/io/xlsx/SharedStrings.h>

#include <limits>
#include <string>
#include <utility>

#include <boost/unordered/unordered_flat_map.hpp>

#include <tessarine/platform/Errors.h>

namespace tessarine {

struct TSharedStringTable::TIndexes {
  // The views are of texts that FTexts holds. Only writers look texts up, so what Add and AddRich append is entered
  // with the next search: the plain texts from KnownCount on wait for it.
  boost::unordered_flat_map<std::u16string_view, int32_t> ByText;
  size_t KnownCount = 0;
  boost::unordered_flat_map<int32_t, std::vector<TRichStringRun>> Runs;
};

TSharedStringTable::TSharedStringTable() : FIndexes(std::make_unique<TIndexes>()) {}
TSharedStringTable::~TSharedStringTable() = default;

void TSharedStringTable::Clear() {
  *FIndexes = TIndexes();
  FTexts.clear();
}

void TSharedStringTable::CheckRoom() const {
  if (FTexts.size() >= static_cast<size_t>(std::numeric_limits<int32_t>::max()))
    throw ELimit("a string table holds no more than 2,147,483,647 texts");
}

int32_t TSharedStringTable::Add(TText AText) {
  CheckRoom();
  FTexts.push_back(std::move(AText));
  return Count() - 1;
}

int32_t TSharedStringTable::FindOrAdd(const TText& AText) {
  for (size_t& known = FIndexes->KnownCount; known < FTexts.size(); ++known) {
    const auto index = static_cast<int32_t>(known);
    if (!FindRuns(index)) FIndexes->ByText.try_emplace(FTexts[known].View(), index);
  }
  const auto found = FIndexes->ByText.find(AText.View());
  return found == FIndexes->ByText.end() ? Add(AText) : found->second;
}

int32_t TSharedStringTable::AddRich(std::vector<TRichStringRun> ARuns, TText AText) {
  const int32_t index = Add(std::move(AText));
  FIndexes->Runs.emplace(index, std::move(ARuns));
  return index;
}

TSharedStringItem TSharedStringTable::GetItem(int32_t AIndex) const {
  if (AIndex < 0 || AIndex >= Count())
    throw EArgument("a string table of " + std::to_string(Count()) + " texts has no text " + std::to_string(AIndex));
  TSharedStringItem item;
  item.Text = TextAt(AIndex);
  if (const auto* runs = FindRuns(AIndex)) {
    item.Runs = *runs;
    item.IsRich = true;
  }
  return item;
}

const std::vector<TRichStringRun>* TSharedStringTable::FindRuns(int32_t AIndex) const {
  if (FIndexes->Runs.empty()) return nullptr;
  const auto found = FIndexes->Runs.find(AIndex);
  return found == FIndexes->Runs.end() ? nullptr : &found->second;
}

}  // namespace tessarine
