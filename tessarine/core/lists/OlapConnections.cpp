#include <tessarine/core/lists/OlapConnections.h>

#include <algorithm>

#include <tessarine/platform/Unicode.h>

namespace tessarine {

namespace {

std::u16string NormalizedMember(std::u16string_view AText) { return ToAsciiUpper(TrimSpaces(AText)); }

}  // namespace

void TOlapConnection::SetMockMembers(std::u16string_view ASetName, std::vector<TText> AMembers) {
  std::u16string name = NormalizedMember(ASetName);
  const auto found = std::find_if(FMockMembers.begin(), FMockMembers.end(),
                                  [&](const TMemberSet& ASet) { return ASet.first == name; });
  if (found != FMockMembers.end()) {
    found->second = std::move(AMembers);
  } else {
    FMockMembers.emplace_back(std::move(name), std::move(AMembers));
  }
}

void TOlapConnection::SetMockMeasure(std::u16string_view AKey, double AValue) {
  FMockMeasures[NormalizedMember(AKey)] = AValue;
}

const std::vector<TText>* TOlapConnection::FindMembers(std::u16string_view ASetName) const {
  const std::u16string name = NormalizedMember(ASetName);
  for (const TMemberSet& set : FMockMembers)
    if (set.first == name) return &set.second;
  return nullptr;
}

size_t TOlapConnection::MockMemberCount(std::u16string_view ASetName) const {
  const std::vector<TText>* members = FindMembers(ASetName);
  return members ? members->size() : 0;
}

TText TOlapConnection::ResolveMember(std::u16string_view AExpression) const { return TText(TrimSpaces(AExpression)); }

TCellValue TOlapConnection::EvaluateCubeValue(std::span<const TText> AMembers) const {
  std::u16string key;
  for (size_t i = 0; i < AMembers.size(); ++i) {
    if (i > 0) key += u'|';
    key += NormalizedMember(AMembers[i]);
  }
  const auto found = FMockMeasures.find(key);
  return found == FMockMeasures.end() ? TCellValue::FromError(ceNA) : TCellValue::FromNumber(found->second);
}

TOlapConnection& TOlapConnectionList::Add(std::unique_ptr<TOlapConnection> AConnection) {
  FItems.push_back(std::move(AConnection));
  return *FItems.back();
}

TOlapConnection* TOlapConnectionList::FindById(std::u16string_view AId) const {
  for (const auto& connection : FItems)
    if (EqualAsciiNoCase(connection->Id, AId)) return connection.get();
  return nullptr;
}

}  // namespace tessarine
