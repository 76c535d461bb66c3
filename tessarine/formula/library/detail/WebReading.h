#pragma once

#include <cstddef>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <tessarine/core/sheet/Providers.h>
#include <tessarine/formula/FormulaArg.h>
#include <tessarine/formula/library/detail/ArgReading.h>

namespace tessarine {
class IHttpClient;
}

/// What the functions that bring in data from outside share.
namespace tessarine::detail {

/// UTF-16 units of a fetched document; a longer one is a failed fetch.
inline constexpr size_t kMaxFetchedText = 0x500000;
inline constexpr int32_t kFetchTimeoutMs = 10'000;

// Arguments ----------------------------------------------------------------------------------------------------------

/// The error that a call has as its result whatever it would do: the first argument that is one, else #VALUE! for too
/// few arguments.
std::optional<TFormulaArg> ErrorOfArgs(TFormulaArgs AArgs, size_t AMinArgs);

/// The trimmed display text of an argument; empty without it.
std::u16string TrimmedArg(TFormulaArgs AArgs, size_t AIndex);

bool IsGiven(TFormulaArgs AArgs, size_t AIndex);  // and not blank

/// A Boolean, a number, or the text TRUE or FALSE in any case.
std::optional<bool> TryArgAsBool(TFormulaArgs AArgs, size_t AIndex);

/// The whole number of an argument, ADefault for none or a blank; nothing for what is no number.
std::optional<int64_t> WholeArgOr(TFormulaArgs AArgs, size_t AIndex, int64_t ADefault);

// Fetching -----------------------------------------------------------------------------------------------------------

/// Not empty, at most 2048 units, "http://" or "https://" in front.
bool IsWebUrl(std::u16string_view AUrl);

/// The text at AUrl, from the workbook's cache or from the network and then kept there. Nothing when it cannot be
/// fetched, is longer than AMaxUnits or the host forbids the network.
std::optional<TText> FetchCached(const TFormulaContext& AContext, std::u16string_view AUrl,
                                 size_t AMaxUnits = kMaxFetchedText);

/// The unreserved characters of RFC 3986 stay, every other byte of the UTF-8 text becomes "%" and two digits.
std::string PercentEncoded(std::u16string_view AText);

/// What a host's provider answers; what it throws counts as a failure.
template <class F>
bool AskProvider(F&& AAsk) {
  try {
    return AAsk();
  } catch (const std::exception&) {
    return false;
  }
}

// Results ------------------------------------------------------------------------------------------------------------

/// A number for a text that reads as one, else the text; the empty text stays a text.
TCellValue TypedCell(TText AText);

using TValueRows = std::vector<std::vector<TCellValue>>;

/// The rectangle of rows of different lengths, as wide as the widest, filled up with empty texts. #N/A without a cell,
/// #NUM! when it were larger than formulas may generate.
TFormulaArg RectangleOf(TValueRows ARows);

/// One value, or a column of several; #N/A for none.
TFormulaArg ColumnOf(std::vector<TCellValue> AValues);

/// A provider's block: #N/A when its counts are not those of its values. Numbers that are none are #NUM!, and formulas
/// are texts.
TFormulaArg BlockOf(TProviderBlock ABlock);

}  // namespace tessarine::detail
