#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <tessarine/Export.h>
#include <tessarine/core/values/CellValue.h>
#include <tessarine/core/values/Text.h>

namespace tessarine {

/// A connection to a cube. It asks no server: sets of members and values, which a host or a document fills in, are all
/// that it knows. Names of sets and members count trimmed and without regard to ASCII case.
class TESSARINE_API TOlapConnection {
 public:
  explicit TOlapConnection(TText AId) : Id(std::move(AId)) {}

  TText Id;
  TText Provider;
  TText ConnectionString;
  TText Catalog;
  TText Cube;

  /// A set's normalised name and its members.
  using TMemberSet = std::pair<std::u16string, std::vector<TText>>;

  void SetMockMembers(std::u16string_view ASetName, std::vector<TText> AMembers);
  void SetMockMeasure(std::u16string_view AKey, double AValue);

  /// In the order in which they were first set.
  const std::vector<TMemberSet>& MockMembers() const { return FMockMembers; }
  const std::map<std::u16string, double>& MockMeasures() const { return FMockMeasures; }

  /// The members of a set, or null; valid until the sets change.
  const std::vector<TText>* FindMembers(std::u16string_view ASetName) const;
  /// 0 for a set that is not there.
  size_t MockMemberCount(std::u16string_view ASetName) const;

  /// The member's name: the text trimmed.
  TText ResolveMember(std::u16string_view AExpression) const;

  /// The value under the members' names joined by "|"; #N/A when there is none.
  TCellValue EvaluateCubeValue(std::span<const TText> AMembers) const;

 private:
  std::vector<TMemberSet> FMockMembers;
  std::map<std::u16string, double> FMockMeasures;
};

/// The connections of a workbook in order of addition; owns them.
class TESSARINE_API TOlapConnectionList {
 public:
  TOlapConnectionList() = default;
  TOlapConnectionList(const TOlapConnectionList&) = delete;
  TOlapConnectionList& operator=(const TOlapConnectionList&) = delete;

  void Clear() { FItems.clear(); }
  TOlapConnection& Add(std::unique_ptr<TOlapConnection> AConnection);

  bool IsEmpty() const { return FItems.empty(); }
  size_t Count() const { return FItems.size(); }
  TOlapConnection& GetItem(size_t AIndex) { return *FItems[AIndex]; }
  const TOlapConnection& GetItem(size_t AIndex) const { return *FItems[AIndex]; }
  auto begin() const { return FItems.begin(); }
  auto end() const { return FItems.end(); }

  /// The first of that id without regard to ASCII case, or null.
  TOlapConnection* FindById(std::u16string_view AId) const;

 private:
  std::vector<std::unique_ptr<TOlapConnection>> FItems;
};

}  // namespace tessarine
