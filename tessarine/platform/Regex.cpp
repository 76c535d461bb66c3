#include <tessarine/platform/Regex.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <new>
#include <vector>

#define PCRE2_CODE_UNIT_WIDTH 16
#include <pcre2.h>

#include <tessarine/platform/Unicode.h>

namespace tessarine {

namespace {

// A search first runs bare, within limits that keep even the worst text and pattern short. Long texts, and searches
// that exceed these limits, run with a callout between the items of the pattern, which looks at the clock.
constexpr size_t kQuickText = 256;
constexpr size_t kQuickReplacement = 1024;
constexpr uint32_t kQuickSteps = 10'000;
constexpr auto kMostTime = std::chrono::milliseconds(500);
constexpr uint32_t kStepsPerLook = 32;
constexpr uint32_t kQuickHeapKilobytes = 1024;
constexpr uint32_t kMostHeapKilobytes = 64 * 1024;

constexpr size_t kMostPatternUnits = 32'768;
constexpr size_t kMostKept = 32;              // patterns a thread
constexpr size_t kMostCodeBytes = 32 * 1024;  // of one that is kept or translated
constexpr uint32_t kUsesBeforeTranslation = 3;
constexpr size_t kStackBytes = 32 * 1024;
constexpr size_t kMostStackBytes = 1024 * 1024;

template <auto Free>
struct TFreedBy {
  template <class T>
  void operator()(T* AThing) const {
    Free(AThing);
  }
};
using TCode = std::unique_ptr<pcre2_code, TFreedBy<pcre2_code_free>>;
using TMatchData = std::unique_ptr<pcre2_match_data, TFreedBy<pcre2_match_data_free>>;
using TMatchContext = std::unique_ptr<pcre2_match_context, TFreedBy<pcre2_match_context_free>>;
using TCompileContext = std::unique_ptr<pcre2_compile_context, TFreedBy<pcre2_compile_context_free>>;
using TJitStack = std::unique_ptr<pcre2_jit_stack, TFreedBy<pcre2_jit_stack_free>>;

template <class T>
T* Made(T* AThing) {
  if (!AThing) throw std::bad_alloc();
  return AThing;
}

PCRE2_SPTR UnitsOf(std::u16string_view AText) {
  static constexpr char16_t kNothing = 0;
  return reinterpret_cast<PCRE2_SPTR>(AText.empty() ? &kNothing : AText.data());
}

// Patterns -----------------------------------------------------------------------------------------------------------

/// The bare code, and once needed the one with callouts. Null for an invalid pattern.
struct TPattern {
  std::u16string Text;
  TCode Quick;
  TCode Guarded;
  TMatchData Match;
  uint32_t Uses = 0;
  bool HasGroups = false;
};

size_t CodeBytes(const pcre2_code* ACode) {
  size_t bytes = 0;
  return pcre2_pattern_info(ACode, PCRE2_INFO_SIZE, &bytes) == 0 ? bytes : 0;
}

/// Machine code, where there is a translator, the system lets it write code and the pattern suits it; matching works
/// without.
void Translate(pcre2_code* ACode) {
  if (CodeBytes(ACode) <= kMostCodeBytes) (void)pcre2_jit_compile(ACode, PCRE2_JIT_COMPLETE);
}

TCode Compile(std::u16string_view APattern, uint32_t AOptions, pcre2_compile_context* AContext) {
  int error = 0;
  size_t place = 0;
  constexpr uint32_t options = PCRE2_UTF | PCRE2_MATCH_INVALID_UTF | PCRE2_NEVER_BACKSLASH_C;
  return TCode(pcre2_compile(UnitsOf(APattern), APattern.size(), options | AOptions, &error, &place, AContext));
}

// A thread's patterns and workplace ----------------------------------------------------------------------------------

/// The time at which a search gives up.
struct TDeadline {
  std::chrono::steady_clock::time_point End;
  uint32_t Steps = 0;

  static int Look(pcre2_callout_block*, void* AData) {
    auto& deadline = *static_cast<TDeadline*>(AData);
    if (++deadline.Steps % kStepsPerLook != 0) return 0;
    return std::chrono::steady_clock::now() < deadline.End ? 0 : PCRE2_ERROR_MATCHLIMIT;
  }
};

class TRegexSpace {
 public:
  TRegexSpace()
      : FCompileContext(Made(pcre2_compile_context_create(nullptr))),
        FQuickContext(Made(pcre2_match_context_create(nullptr))),
        FGuardedContext(Made(pcre2_match_context_create(nullptr))) {
    pcre2_set_max_pattern_length(FCompileContext.get(), kMostPatternUnits);
    pcre2_set_match_limit(FQuickContext.get(), kQuickSteps);
    pcre2_set_heap_limit(FQuickContext.get(), kQuickHeapKilobytes);
    pcre2_set_heap_limit(FGuardedContext.get(), kMostHeapKilobytes);
  }

  /// The pattern ready for use until the next call, or null when it is invalid.
  TPattern* Find(std::u16string_view AText) {
    const auto found = std::find_if(FKept.begin(), FKept.end(), [AText](const auto& APattern) {
      return std::u16string_view(APattern->Text) == AText;
    });
    if (found == FKept.end()) {
      if (FKept.size() == kMostKept) FKept.pop_back();
      FKept.insert(FKept.begin(), MakePattern(AText));
    } else if (found != FKept.begin()) {
      std::rotate(FKept.begin(), found, found + 1);
    }
    TPattern& pattern = *FKept.front();
    if (++pattern.Uses == kUsesBeforeTranslation && pattern.Quick) Translate(pattern.Quick.get());
    return pattern.Quick ? &pattern : nullptr;
  }

  /// Runs ACall(code, options, context), a search that answers as the engine does: bare if AMayBeQuick and it suffices,
  /// else against the clock.
  template <class TCall>
  int Run(TPattern& APattern, bool AMayBeQuick, TCall&& ACall) {
    if (AMayBeQuick) {
      const int result = ACall(APattern.Quick.get(), 0u, FQuickContext.get());
      if (!ExceedsLimit(result)) return result;
    }
    FIsUntidy = true;
    if (!APattern.Guarded) {
      APattern.Guarded = Compile(APattern.Text, PCRE2_AUTO_CALLOUT, FCompileContext.get());
      if (!APattern.Guarded) return PCRE2_ERROR_MATCHLIMIT;  // too large with its callouts
      Translate(APattern.Guarded.get());
    }
    if (!FStack) {
      FStack.reset(Made(pcre2_jit_stack_create(kStackBytes, kMostStackBytes, nullptr)));
      pcre2_jit_stack_assign(FGuardedContext.get(), nullptr, FStack.get());
    }
    TDeadline deadline{std::chrono::steady_clock::now() + kMostTime};
    pcre2_set_callout(FGuardedContext.get(), TDeadline::Look, &deadline);
    const int result = ACall(APattern.Guarded.get(), 0u, FGuardedContext.get());
    if (result != PCRE2_ERROR_JIT_STACKLIMIT) return result;
    return ACall(APattern.Guarded.get(), uint32_t{PCRE2_NO_JIT}, FGuardedContext.get());
  }

  /// Called when a result was read: lets go of what is too large to be kept, which is what a search against the clock
  /// may have used, and large patterns.
  void Tidy(TPattern& APattern) {
    const bool isLarge = CodeBytes(APattern.Quick.get()) > kMostCodeBytes;
    if (FIsUntidy) APattern.Match = MakeMatchData(APattern);
    FIsUntidy = false;
    if (isLarge) FKept.erase(FKept.begin());
  }

 private:
  static bool ExceedsLimit(int AResult) {
    return AResult == PCRE2_ERROR_MATCHLIMIT || AResult == PCRE2_ERROR_DEPTHLIMIT || AResult == PCRE2_ERROR_HEAPLIMIT ||
           AResult == PCRE2_ERROR_JIT_STACKLIMIT;
  }

  std::unique_ptr<TPattern> MakePattern(std::u16string_view AText) const {
    auto pattern = std::make_unique<TPattern>();
    pattern->Text = AText;
    pattern->Quick = Compile(AText, 0, FCompileContext.get());
    if (!pattern->Quick) return pattern;
    uint32_t groups = 0;
    pcre2_pattern_info(pattern->Quick.get(), PCRE2_INFO_CAPTURECOUNT, &groups);
    pattern->HasGroups = groups > 0;
    pattern->Match = MakeMatchData(*pattern);
    return pattern;
  }

  static TMatchData MakeMatchData(const TPattern& APattern) {
    return TMatchData(Made(pcre2_match_data_create_from_pattern(APattern.Quick.get(), nullptr)));
  }

  std::vector<std::unique_ptr<TPattern>> FKept;  // the one used last in front
  TCompileContext FCompileContext;
  TMatchContext FQuickContext;
  TMatchContext FGuardedContext;
  TJitStack FStack;
  bool FIsUntidy = false;
};

TRegexSpace& ThreadSpace() {
  thread_local TRegexSpace space;
  return space;
}

/// The part of AText between two places of a match; empty for a group that took no part.
std::u16string_view PartOf(std::u16string_view AText, const size_t* APlaces) {
  const bool isSet = APlaces[0] <= APlaces[1] && APlaces[1] <= AText.size();
  return isSet ? AText.substr(APlaces[0], APlaces[1] - APlaces[0]) : std::u16string_view();
}

/// The engine knows "$1" but not "\1".
std::u16string EngineReplacement(std::u16string_view AReplacement) {
  std::u16string result;
  result.reserve(AReplacement.size());
  for (size_t i = 0; i < AReplacement.size(); ++i) {
    const char16_t unit = AReplacement[i];
    const char16_t next = i + 1 < AReplacement.size() ? AReplacement[i + 1] : u'\0';
    if (unit == u'\\' && IsAsciiDigit(next)) {
      ((result += u"${") += next) += u'}';
      ++i;
    } else {
      result += unit;
      if (unit == u'\\' && next == u'\\') ++i;
      if (unit == u'$' && next == u'$') result += AReplacement[++i];
    }
  }
  return result;
}

}  // namespace

TRegexMatch FindRegex(std::u16string_view APattern, std::u16string_view AText) {
  TRegexMatch match;
  match.Outcome = roFailed;
  if (APattern.size() > kMostPatternUnits) return match;
  TRegexSpace& space = ThreadSpace();
  TPattern* const pattern = space.Find(APattern);
  if (!pattern) return match;
  match.HasGroups = pattern->HasGroups;
  const int result =
      space.Run(*pattern, AText.size() <= kQuickText,
                [&](const pcre2_code* ACode, uint32_t AOptions, pcre2_match_context* AContext) {
                  return pcre2_match(ACode, UnitsOf(AText), AText.size(), 0, AOptions, pattern->Match.get(), AContext);
                });
  if (result > 0) {
    match.Outcome = roMatched;
    const size_t* places = pcre2_get_ovector_pointer(pattern->Match.get());
    match.Whole = PartOf(AText, places);
    if (result > 1) match.FirstGroup = PartOf(AText, places + 2);
  } else if (result == PCRE2_ERROR_NOMATCH) {
    match.Outcome = roNoMatch;
  }
  space.Tidy(*pattern);
  return match;
}

TRegexOutcome ReplaceRegex(std::u16string_view APattern, std::u16string_view AText, std::u16string_view AReplacement,
                           size_t AMaxLength, std::u16string& AOut) {
  if (APattern.size() > kMostPatternUnits) return roFailed;
  TRegexSpace& space = ThreadSpace();
  TPattern* const pattern = space.Find(APattern);
  if (!pattern) return roFailed;
  const std::u16string replacement = EngineReplacement(AReplacement);
  const bool mayBeQuick = AText.size() <= kQuickText && replacement.size() <= kQuickReplacement;
  constexpr uint32_t options =
      PCRE2_SUBSTITUTE_GLOBAL | PCRE2_SUBSTITUTE_UNSET_EMPTY | PCRE2_SUBSTITUTE_OVERFLOW_LENGTH;
  size_t length = 0;
  const auto substitute = [&](const pcre2_code* ACode, uint32_t AOptions, pcre2_match_context* AContext) {
    length = AOut.size();
    return pcre2_substitute(ACode, UnitsOf(AText), AText.size(), 0, options | AOptions, pattern->Match.get(), AContext,
                            UnitsOf(replacement), replacement.size(), reinterpret_cast<PCRE2_UCHAR*>(AOut.data()),
                            &length);
  };
  AOut.resize(std::min(AText.size() + replacement.size(), AMaxLength) + 1);  // the engine ends its text with a zero
  int result = space.Run(*pattern, mayBeQuick, substitute);
  if (result == PCRE2_ERROR_NOMEMORY && length <= AMaxLength + 1) {  // now the length needed, its zero included
    AOut.resize(length);
    result = space.Run(*pattern, mayBeQuick, substitute);
  }
  space.Tidy(*pattern);
  if (result < 0 || length > AMaxLength) return roFailed;
  AOut.resize(length);
  return result > 0 ? roMatched : roNoMatch;
}

}  // namespace tessarine
