#include <tessarine/platform/detail/XPathCost.h>

#include <algorithm>
#include <array>
#include <initializer_list>
#include <vector>

namespace tessarine::detail {

namespace {

bool IsNameByte(char AByte) {
  const auto code = static_cast<unsigned char>(AByte);
  return (code >= '0' && code <= '9') || ((code | 0x20) >= 'a' && (code | 0x20) <= 'z') || code == '_' || code == '-' ||
         code >= 0x80;
}

enum class TTokenKind { tkName, tkLiteral, tkSymbol, tkEnd };

struct TToken {
  TTokenKind Kind = TTokenKind::tkEnd;
  std::string_view Text;

  bool Is(std::string_view AText) const { return Text == AText && Kind != TTokenKind::tkLiteral; }
  bool IsLiteral() const {
    return Kind == TTokenKind::tkLiteral || (Kind == TTokenKind::tkName && (Text[0] == '-' || IsDigit(Text[0])));
  }
  static bool IsDigit(char AByte) { return AByte >= '0' && AByte <= '9'; }
};

class TXPathTokens {
 public:
  explicit TXPathTokens(std::string_view AText) : FText(AText) {}

  TToken Next() {
    while (!FText.empty() && static_cast<unsigned char>(FText[0]) <= ' ') FText.remove_prefix(1);
    if (FText.empty()) return {};
    const char first = FText[0];
    if (first == '"' || first == '\'') {
      const size_t end = FText.find(first, 1);
      return Take(TTokenKind::tkLiteral, end == std::string_view::npos ? FText.size() : end + 1);
    }
    size_t length = 0;
    while (length < FText.size() && IsNameByte(FText[length])) ++length;
    if (length > 0) return Take(TTokenKind::tkName, length);
    constexpr std::array<std::string_view, 6> kDoubled = {"//", "..", "::", "!=", "<=", ">="};
    const bool isDoubled = std::any_of(kDoubled.begin(), kDoubled.end(),
                                       [&](std::string_view ASymbol) { return FText.starts_with(ASymbol); });
    return Take(TTokenKind::tkSymbol, isDoubled ? 2 : 1);
  }

 private:
  TToken Take(TTokenKind AKind, size_t ALength) {
    const TToken token{AKind, FText.substr(0, ALength)};
    FText.remove_prefix(ALength);
    return token;
  }

  std::string_view FText;
};

bool IsAnyOf(const TToken& AToken, std::initializer_list<std::string_view> ATexts) {
  return std::any_of(ATexts.begin(), ATexts.end(), [&](std::string_view AText) { return AToken.Is(AText); });
}

bool IsComparison(const TToken& AToken) { return IsAnyOf(AToken, {"=", "!=", "<", "<=", ">", ">="}); }

/// Whether a token that begins an operand shows that it is one value and no set of nodes.
bool BeginsScalar(const TToken& AToken) {
  return AToken.IsLiteral() || IsAnyOf(AToken, {"@",
                                                ".",
                                                "-",
                                                "position",
                                                "last",
                                                "count",
                                                "string",
                                                "number",
                                                "sum",
                                                "name",
                                                "local-name",
                                                "string-length",
                                                "normalize-space",
                                                "concat",
                                                "substring",
                                                "substring-before",
                                                "substring-after",
                                                "translate",
                                                "round",
                                                "floor",
                                                "ceiling",
                                                "true",
                                                "false",
                                                "not",
                                                "contains",
                                                "starts-with",
                                                "boolean"});
}

/// Whether an operand may end with the token.
bool EndsOperand(const TToken& AToken) {
  if (AToken.Kind == TTokenKind::tkSymbol) return IsAnyOf(AToken, {")", "]", ".", "..", "*"});
  return AToken.Kind != TTokenKind::tkEnd;
}

class TCostReader {
 public:
  TCostReader(std::string_view AXPath, const TXmlShape& AShape)
      : FTokens(AXPath), FShape(AShape), FSiblings(std::max(1.0, AShape.SiblingPairs / AShape.Nodes)) {}

  std::optional<double> Read() {
    for (TToken token = FTokens.Next(); token.Kind != TTokenKind::tkEnd; FBefore = token, token = FNext) {
      FNext = FTokens.Next();
      if (++FCount > kMaxXPathTokens) return std::nullopt;
      if (IsAnyOf(token, {"[", "("})) {
        if (FOpen.size() >= kMaxXPathNesting) return std::nullopt;
        Open(token.Is("["));
      } else if (IsAnyOf(token, {"]", ")"})) {
        Close();
      } else {
        Count(token);
      }
      FPeak = std::max(FPeak, FFactor);
    }
    return FCost;
  }

 private:
  struct TBracket {
    bool IsPredicate;
    double Base;
    double Factor;
    double Peak;
  };

  void Open(bool AIsPredicate) {
    FOpen.push_back({AIsPredicate, FBase, FFactor, FPeak});
    FPredicates += AIsPredicate ? 1 : 0;
    FBase = FPeak = FFactor;
    if (!AIsPredicate) AddTexts(FFactor);
  }

  /// What a predicate repeats is not repeated behind it; a set in parentheses goes on as its largest part.
  void Close() {
    if (FOpen.empty()) return;
    const TBracket bracket = FOpen.back();
    FOpen.pop_back();
    FPredicates -= bracket.IsPredicate ? 1 : 0;
    FBase = bracket.Base;
    FFactor = bracket.IsPredicate ? bracket.Factor : std::max(bracket.Factor, FPeak);
    FPeak = std::max(bracket.Peak, FPeak);
  }

  void Count(const TToken& AToken) {
    if (IsComparison(AToken)) {
      const bool isOfSets = !FBefore.IsLiteral() && !BeginsScalar(FNext);
      FFactor *= isOfSets ? FShape.Nodes : 1;
      AddTexts(FFactor);
    } else if (IsAnyOf(AToken, {"/", "//"})) {
      if (FPredicates == 0) FFactor = 1;
      FFactor *= FactorOfSlash(AToken.Is("//"));
    } else if (FNext.Is("::")) {
      FFactor *= FactorOfAxis(AToken);
    } else if (AToken.Is("..")) {
      FFactor *= FNext.Is("/") || FNext.Is("//") ? 1 : FactorOfTreeTexts();
    } else if (AToken.Is(".")) {
      AddTexts(FFactor * FShape.Depth);  // an element's text is part of those around
    } else if (AToken.Is(",")) {
      AddTexts(FFactor);
    }
    FCost += FShape.Nodes * FFactor;
    const bool isOperator = IsAnyOf(AToken, {"|", "+", ","}) || IsComparison(AToken) ||
                            (EndsOperand(FBefore) && IsAnyOf(AToken, {"and", "or", "div", "mod", "-", "*"}));
    if (isOperator) FFactor = FBase;
  }

  double FactorOfSlash(bool AIsDouble) const {
    if (!EndsOperand(FBefore) || IsAnyOf(FBefore, {"*", "and", "or", "div", "mod"})) {  // from the root, or may be
      if (FPredicates > 0) return FShape.Nodes;
      if (!EndsOperand(FBefore)) return 1;
    }
    return (FPredicates > 0 && FBefore.Is("..") ? FSiblings : 1) * (AIsDouble ? FShape.Depth : 1);
  }

  double FactorOfAxis(const TToken& AAxis) const {
    if (IsAnyOf(AAxis, {"child", "attribute", "self", "namespace"})) return 1;
    if (IsAnyOf(AAxis, {"descendant", "descendant-or-self"})) return FShape.Depth;
    if (IsAnyOf(AAxis, {"preceding-sibling", "following-sibling"})) return FSiblings;
    if (IsAnyOf(AAxis, {"parent", "ancestor", "ancestor-or-self"}))
      return FPredicates == 0 ? FShape.Depth : std::max(FShape.Depth, FactorOfTreeTexts());
    return FShape.Nodes;
  }

  /// What reading the texts of all ancestors of all nodes is, in visits of all nodes.
  double FactorOfTreeTexts() const { return std::max(FSiblings, FShape.TreeTexts / kBytesPerVisit / FShape.Nodes); }

  void AddTexts(double AFactor) { FCost += FShape.TextBytes / kBytesPerVisit * AFactor; }

  static constexpr double kBytesPerVisit = 4;

  TXPathTokens FTokens;
  TXmlShape FShape;
  double FSiblings;
  size_t FCount = 0;
  TToken FBefore;
  TToken FNext;
  std::vector<TBracket> FOpen;
  size_t FPredicates = 0;  // open ones
  double FBase = 1;        // the factor at which each operand here begins
  double FFactor = 1;
  double FPeak = 1;  // the largest since the bracket
  double FCost = 0;
};

}  // namespace

std::optional<double> XPathCostBound(std::string_view AXPath, const TXmlShape& AShape) {
  if (AXPath.size() > kMaxXPathLength) return std::nullopt;
  return TCostReader(AXPath, AShape).Read();
}

}  // namespace tessarine::detail
