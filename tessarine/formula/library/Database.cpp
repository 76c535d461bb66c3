#include <algorithm>
#include <cmath>
#include <optional>
#include <vector>

#include <tessarine/formula/FunctionTable.h>
#include <tessarine/formula/library/detail/ArgReading.h>
#include <tessarine/formula/library/detail/RecordFilter.h>
#include <tessarine/formula/library/detail/Samples.h>

namespace tessarine {

namespace {

using namespace detail;

/// The column of the field argument: the name of a header or a number from 1; -1 when it is neither.
int32_t FieldColumn(const TFormulaArg& ADatabase, const TFormulaArg& AField) {
  const TValueView field = AField.FirstView();
  if (field.Kind == cvkText) {
    const int32_t named = HeaderColumn(ADatabase, field);
    if (named >= 0) return named;
  }
  int64_t number = 0;
  if (!ArgAsInt64(AField, number) || number < 1 || number > ADatabase.ColCount) return -1;
  return static_cast<int32_t>(number - 1);
}

/// The field's values of the records that pass, in order; nothing when the arguments name no field.
std::optional<std::vector<TValueView>> SelectedValues(TFormulaArgs AArgs) {
  if (AArgs.size() < 3 || !AArgs[0].IsRange || AArgs[0].CellCount() == 0) return std::nullopt;
  const TFormulaArg& database = AArgs[0];
  const int32_t field = FieldColumn(database, AArgs[1]);
  if (field < 0) return std::nullopt;
  const std::vector<uint8_t> passing = TRecordFilter(database, AArgs[2]).Passing();
  std::vector<TValueView> values;
  for (size_t record = 0; record < passing.size(); ++record) {
    if (passing[record]) values.push_back(database.ViewAt(static_cast<int32_t>(record) + 1, field));
  }
  return values;
}

using TAggregate = TCellValue (*)(const std::vector<double>& ANumbers);

/// database, field, criteria: an aggregate of the values that stand for numbers, blanks among them.
template <TAggregate Aggregate>
TCellValue CallDatabase(TFormulaArgs AArgs, const TFormulaContext&) {
  const auto values = SelectedValues(AArgs);
  if (!values) return ValueError();
  std::vector<double> numbers;
  for (const TValueView& value : *values) {
    double number = 0;
    if (AsNumber(value, number)) numbers.push_back(number);
  }
  return Aggregate(numbers);
}

double TotalOfNumbers(const std::vector<double>& ANumbers) {
  double total = 0;
  for (const double number : ANumbers) total += number;
  return total;
}

TCellValue DSum(const std::vector<double>& ANumbers) { return NumberOrError(TotalOfNumbers(ANumbers)); }
TCellValue DCount(const std::vector<double>& ANumbers) {
  return TCellValue::FromNumber(static_cast<double>(ANumbers.size()));
}
TCellValue DAverage(const std::vector<double>& ANumbers) {
  if (ANumbers.empty()) return Div0Error();
  return NumberOrError(TotalOfNumbers(ANumbers) / static_cast<double>(ANumbers.size()));
}
TCellValue DMax(const std::vector<double>& ANumbers) {
  return NumberOrError(ANumbers.empty() ? 0 : *std::max_element(ANumbers.begin(), ANumbers.end()));
}
TCellValue DMin(const std::vector<double>& ANumbers) {
  return NumberOrError(ANumbers.empty() ? 0 : *std::min_element(ANumbers.begin(), ANumbers.end()));
}
TCellValue DProduct(const std::vector<double>& ANumbers) {
  double product = ANumbers.empty() ? 0 : 1;
  for (const double number : ANumbers) product *= number;
  return NumberOrError(product);
}

template <bool OfPopulation>
TCellValue DVariance(const std::vector<double>& ANumbers) {
  const double variance = MomentsOf(ANumbers).Variance(OfPopulation);
  return std::isnan(variance) ? Div0Error() : NumberOrError(variance);
}
template <bool OfPopulation>
TCellValue DDeviation(const std::vector<double>& ANumbers) {
  const double variance = MomentsOf(ANumbers).Variance(OfPopulation);
  return std::isnan(variance) ? Div0Error() : NumberOrError(std::sqrt(variance));
}

TCellValue CallDCountA(TFormulaArgs AArgs, const TFormulaContext&) {
  const auto values = SelectedValues(AArgs);
  if (!values) return ValueError();
  const auto count =
      std::count_if(values->begin(), values->end(), [](const TValueView& AValue) { return !AValue.IsEmpty(); });
  return TCellValue::FromNumber(static_cast<double>(count));
}

TCellValue CallDGet(TFormulaArgs AArgs, const TFormulaContext&) {
  const auto values = SelectedValues(AArgs);
  if (!values || values->empty()) return ValueError();
  return values->size() > 1 ? NumError() : TCellValue::FromView(values->front());
}

constexpr std::u16string_view kDatabaseArguments = u"database, field, criteria";

// clang-format off
constexpr TFunctionDef kDatabaseFunctions[] = {
    {.Name = u"DAVERAGE", .MinArgs = 3, .MaxArgs = 3, .Tier = ftrExtra, .Body = CallDatabase<DAverage>,
     .Arguments = kDatabaseArguments, .Description = u"Mean of a field of the records that meet criteria."},
    {.Name = u"DCOUNT", .MinArgs = 3, .MaxArgs = 3, .Tier = ftrExtra, .Body = CallDatabase<DCount>,
     .Arguments = kDatabaseArguments,
     .Description = u"How many of the records that meet criteria have a number in a field."},
    {.Name = u"DCOUNTA", .MinArgs = 3, .MaxArgs = 3, .Tier = ftrExtra, .Body = CallDCountA,
     .Arguments = kDatabaseArguments,
     .Description = u"How many of the records that meet criteria have a value in a field."},
    {.Name = u"DGET", .MinArgs = 3, .MaxArgs = 3, .Tier = ftrExtra, .Body = CallDGet,
     .Arguments = kDatabaseArguments, .Description = u"The field of the one record that meets criteria."},
    {.Name = u"DMAX", .MinArgs = 3, .MaxArgs = 3, .Tier = ftrExtra, .Body = CallDatabase<DMax>,
     .Arguments = kDatabaseArguments, .Description = u"Largest number in a field of the records that meet criteria."},
    {.Name = u"DMIN", .MinArgs = 3, .MaxArgs = 3, .Tier = ftrExtra, .Body = CallDatabase<DMin>,
     .Arguments = kDatabaseArguments, .Description = u"Smallest number in a field of the records that meet criteria."},
    {.Name = u"DPRODUCT", .MinArgs = 3, .MaxArgs = 3, .Tier = ftrExtra, .Body = CallDatabase<DProduct>,
     .Arguments = kDatabaseArguments, .Description = u"Product of a field of the records that meet criteria."},
    {.Name = u"DSTDEV", .MinArgs = 3, .MaxArgs = 3, .Tier = ftrExtra, .Body = CallDatabase<DDeviation<false>>,
     .Arguments = kDatabaseArguments,
     .Description = u"Standard deviation, as of a sample, of a field of the records that meet criteria."},
    {.Name = u"DSTDEVP", .MinArgs = 3, .MaxArgs = 3, .Tier = ftrExtra, .Body = CallDatabase<DDeviation<true>>,
     .Arguments = kDatabaseArguments,
     .Description = u"Standard deviation, as of a population, of a field of the records that meet criteria."},
    {.Name = u"DSUM", .MinArgs = 3, .MaxArgs = 3, .Tier = ftrExtra, .Body = CallDatabase<DSum>,
     .Arguments = kDatabaseArguments, .Description = u"Sum of a field of the records that meet criteria."},
    {.Name = u"DVAR", .MinArgs = 3, .MaxArgs = 3, .Tier = ftrExtra, .Body = CallDatabase<DVariance<false>>,
     .Arguments = kDatabaseArguments,
     .Description = u"Variance, as of a sample, of a field of the records that meet criteria."},
    {.Name = u"DVARP", .MinArgs = 3, .MaxArgs = 3, .Tier = ftrExtra, .Body = CallDatabase<DVariance<true>>,
     .Arguments = kDatabaseArguments,
     .Description = u"Variance, as of a population, of a field of the records that meet criteria."},
};
// clang-format on

}  // namespace

std::span<const TFunctionDef> DatabaseFunctions() { return kDatabaseFunctions; }

}  // namespace tessarine
