#include <span>
#include <utility>
#include <vector>

#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/formula/FunctionTable.h>
#include <tessarine/formula/PivotData.h>
#include <tessarine/formula/library/detail/ArgReading.h>

namespace tessarine {

namespace {

const IPivotDataSource* pivotDataSource = nullptr;

using namespace detail;

/// The first error among the values of arguments, or ceNone.
TCellErrorCode ErrorAmong(TFormulaArgs AArgs) {
  for (const TFormulaArg& arg : AArgs) {
    if (arg.FirstView().IsError()) return arg.FirstView().ErrorCode;
  }
  return ceNone;
}

// GETPIVOTDATA -------------------------------------------------------------------------------------------------------

bool IsUnknownPivot(const TCellValue& AValue) { return AValue.IsError() && AValue.ErrorCode == ceRef; }

/// A pivot table that is not where the reference points is looked for at that address of every sheet, the last first.
TCellValue FindPivotData(const TFormulaContext& AContext, int32_t ASheetIndex, TCellAddress AAddress,
                         const TText& AField, std::span<const TPivotItemPair> APairs) {
  if (!pivotDataSource || !AContext.Workbook || !AAddress.IsValid()) return RefError();
  TWorkbook& workbook = *AContext.Workbook;
  TCellValue value = pivotDataSource->GetPivotData(workbook, ASheetIndex, AAddress, AField, APairs);
  for (int32_t sheet = workbook.SheetCount() - 1; sheet >= 0 && IsUnknownPivot(value); --sheet) {
    if (sheet != ASheetIndex) value = pivotDataSource->GetPivotData(workbook, sheet, AAddress, AField, APairs);
  }
  return value;
}

TCellValue CallGetPivotData(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  if (AArgs.size() < 2) return ValueError();
  const TFormulaArg& anchor = AArgs[1];
  const TFormulaArgs items = AArgs.subspan(2);
  if (const TCellErrorCode error = ErrorAmong(AArgs.first(1)); error != ceNone) return TCellValue::FromError(error);
  if (const TCellErrorCode error = ErrorAmong(items); error != ceNone) return TCellValue::FromError(error);
  if (items.size() % 2 != 0) return RefError();
  std::vector<TPivotItemPair> pairs;
  for (size_t i = 0; i < items.size(); i += 2) pairs.push_back({ArgText(items[i]), items[i + 1].First()});
  const TCellAddress address =
      anchor.HasOrigin ? TCellAddress{anchor.OriginCol, anchor.OriginRow} : TCellAddress::FromA1(ArgText(anchor));
  const bool sheetIsKnown = anchor.HasOrigin && anchor.OriginSheetIndex >= 0;
  return FindPivotData(AContext, sheetIsKnown ? anchor.OriginSheetIndex : AContext.SheetIndex, address,
                       ArgText(AArgs[0]), pairs);
}

TCellValue CallFieldValue(TFormulaArgs AArgs, const TFormulaContext&) {
  return AArgs.empty() ? ValueError() : AArgs[0].First();
}

// Cubes --------------------------------------------------------------------------------------------------------------
// The connection that is named is not looked at: a workbook's first one answers.

/// Whether a call with at least ALeast arguments can be answered; else AAnswer is its result.
bool CanAskCube(TFormulaArgs AArgs, size_t ALeast, const TFormulaContext& AContext, TCellValue& AAnswer) {
  AAnswer = NotAvailable();
  if (AArgs.size() < ALeast) return false;
  if (const TCellErrorCode error = ErrorAmong(AArgs); error != ceNone) {
    AAnswer = TCellValue::FromError(error);
    return false;
  }
  return pivotDataSource && AContext.Workbook;
}

/// What a cell shows for a member or a set: the caption at AIndex when there is one.
TCellValue Captioned(TFormulaArgs AArgs, size_t AIndex, const TText& AText) {
  return TextOf(AIndex < AArgs.size() && !AArgs[AIndex].FirstView().IsEmpty() ? ArgText(AArgs[AIndex]) : AText);
}

TCellValue CallCubeValue(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  TCellValue answer;
  if (!CanAskCube(AArgs, 2, AContext, answer)) return answer;
  std::vector<TText> members;
  for (const TFormulaArg& arg : AArgs.subspan(1)) {
    std::optional<TText> member = pivotDataSource->ResolveMember(*AContext.Workbook, ArgText(arg));
    if (!member) return answer;
    members.push_back(std::move(*member));
  }
  return pivotDataSource->EvaluateCubeValue(*AContext.Workbook, members);
}

TCellValue CallCubeMember(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  TCellValue answer;
  if (!CanAskCube(AArgs, 2, AContext, answer)) return answer;
  const std::optional<TText> member = pivotDataSource->ResolveMember(*AContext.Workbook, ArgText(AArgs[1]));
  return member && !member->IsEmpty() ? Captioned(AArgs, 2, *member) : answer;
}

/// An indicator is known by the value that stands under its name.
TCellValue CallCubeKpiMember(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  TCellValue answer;
  if (!CanAskCube(AArgs, 3, AContext, answer)) return answer;
  const std::optional<TText> member = pivotDataSource->ResolveMember(*AContext.Workbook, ArgText(AArgs[1]));
  if (!member || pivotDataSource->EvaluateCubeValue(*AContext.Workbook, std::span(&*member, 1)).IsError())
    return answer;
  return Captioned(AArgs, 3, *member);
}

/// Connections hold members by name alone: no member has properties.
TCellValue CallCubeMemberProperty(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  TCellValue answer;
  CanAskCube(AArgs, 3, AContext, answer);
  return answer;
}

TCellValue CallCubeRankedMember(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  TCellValue answer;
  if (!CanAskCube(AArgs, 3, AContext, answer)) return answer;
  int64_t rank = 0;
  if (!ArgAsInt64(AArgs[2], rank)) return ValueError();
  const auto members = pivotDataSource->SetMembers(*AContext.Workbook, ArgText(AArgs[1]));
  if (!members || rank < 1 || rank > static_cast<int64_t>(members->size())) return answer;
  return Captioned(AArgs, 3, (*members)[static_cast<size_t>(rank - 1)]);
}

/// A set travels from cell to cell by its name, so that is its value, unless a caption hides it.
TCellValue CallCubeSet(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  TCellValue answer;
  if (!CanAskCube(AArgs, 2, AContext, answer)) return answer;
  const TText name = ArgText(AArgs[1]);
  return pivotDataSource->SetMembers(*AContext.Workbook, name) ? Captioned(AArgs, 2, name) : answer;
}

TCellValue CallCubeSetCount(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  TCellValue answer;
  if (!CanAskCube(AArgs, 1, AContext, answer)) return answer;
  const auto members = pivotDataSource->SetMembers(*AContext.Workbook, ArgText(AArgs[0]));
  return members ? TCellValue::FromNumber(static_cast<double>(members->size())) : answer;
}

// clang-format off
constexpr TFunctionDef kPivotFunctions[] = {
    {.Name = u"CUBEKPIMEMBER", .MinArgs = 3, .MaxArgs = 4, .Tier = ftrExtra, .Body = CallCubeKpiMember,
     .Arguments = u"connection, kpi_name, kpi_property, [caption]",
     .Description = u"The name of a key performance indicator of a cube."},
    {.Name = u"CUBEMEMBER", .MinArgs = 2, .MaxArgs = 3, .Tier = ftrExtra, .Body = CallCubeMember, .InCompletion = true,
     .Arguments = u"connection, member, [caption]", .Description = u"A member of a cube, shown by its caption."},
    {.Name = u"CUBEMEMBERPROPERTY", .MinArgs = 3, .MaxArgs = 3, .Tier = ftrExtra, .Body = CallCubeMemberProperty,
     .Arguments = u"connection, member, property", .Description = u"A property of a member of a cube."},
    {.Name = u"CUBERANKEDMEMBER", .MinArgs = 3, .MaxArgs = 4, .Tier = ftrExtra, .Body = CallCubeRankedMember,
     .Arguments = u"connection, set, rank, [caption]", .Description = u"The member at a place of a set of a cube."},
    {.Name = u"CUBESET", .MinArgs = 2, .MaxArgs = 5, .Tier = ftrExtra, .Body = CallCubeSet,
     .Arguments = u"connection, set, [caption], [sort_order], [sort_by]",
     .Description = u"A set of members of a cube, shown by its caption."},
    {.Name = u"CUBESETCOUNT", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = CallCubeSetCount,
     .Arguments = u"set", .Description = u"How many members a set of a cube has."},
    {.Name = u"CUBEVALUE", .MinArgs = 2, .Tier = ftrExtra, .Body = CallCubeValue, .InCompletion = true,
     .Arguments = u"connection, member1, [member2], ...",
     .Description = u"The value of a cube where its members cross."},
    {.Name = u"FIELDVALUE", .MinArgs = 1, .Tier = ftrExtra, .Body = CallFieldValue, .Arguments = u"value, [field], ...",
     .Description = u"The value itself: values have no fields of their own."},
    {.Name = u"GETPIVOTDATA", .MinArgs = 2, .Tier = ftrExtra, .Body = CallGetPivotData, .InCompletion = true,
     .Arguments = u"value_field, pivot_table, [field1, item1], ...",
     .Description = u"A value of a pivot table, for the records that have the given items."},
};
// clang-format on

}  // namespace

const IPivotDataSource* PivotDataSource() { return pivotDataSource; }
void SetPivotDataSource(const IPivotDataSource* ASource) { pivotDataSource = ASource; }

std::span<const TFunctionDef> PivotFunctions() { return kPivotFunctions; }

}  // namespace tessarine
