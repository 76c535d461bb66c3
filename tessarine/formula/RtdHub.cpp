#include <tessarine/formula/RtdHub.h>

#include <cmath>
#include <exception>
#include <string>
#include <string_view>
#include <utility>

#include <boost/unordered/unordered_flat_map.hpp>
#include <boost/unordered/unordered_flat_set.hpp>

#include <tessarine/core/sheet/Providers.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/values/Address.h>
#include <tessarine/formula/CellId.h>
#include <tessarine/formula/library/detail/ArgReading.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {

namespace {

constexpr char16_t kKeySeparator = u'|';
constexpr char16_t kKeyEscape = u'\\';

/// Parts of a key are joined so that no two lists of parts give one text.
void AppendKeyPart(std::u16string_view APart, std::u16string& AKey) {
  for (const char16_t unit : APart) {
    if (unit == kKeySeparator || unit == kKeyEscape) AKey += kKeyEscape;
    AKey += unit;
  }
  AKey += kKeySeparator;
}

/// What a source may have said, as it may stand in a cell.
TCellValue StorableValue(TCellValue AValue) {
  if (AValue.Kind == cvkFormula) return TCellValue::FromText(std::move(AValue.Text));
  if (AValue.Kind == cvkNumber && !std::isfinite(AValue.Number)) return TCellValue::FromError(ceNum);
  return AValue;
}

}  // namespace

TRtdTopicKey TRtdTopicKey::Make(const TText& AProgId, const TText& AServer, std::span<const TText> ATopics) {
  std::u16string topics;
  for (const TText& topic : ATopics) AppendKeyPart(topic.View(), topics);
  return {TrimSpaces(AProgId.View()), TrimSpaces(AServer.View()), topics};
}

TText TRtdTopicKey::ToString() const {
  std::u16string key;
  AppendKeyPart(ProgId.View(), key);
  AppendKeyPart(Server.View(), key);
  return key.append(TopicsKey.View());
}

struct TTessarineRtdHub::TState {
  /// One topic: its cells, each once, and its last good value.
  struct TTopic {
    std::vector<TRtdCellRef> Cells;
    boost::unordered_flat_set<uint64_t> CellIds;
    std::optional<TCellValue> LastValue;
    bool IsConnected = false;
  };

  /// Marks that a provider is being asked.
  class TAsking {
   public:
    explicit TAsking(TState& AState) : FState(AState) { ++FState.Asking; }
    ~TAsking() { --FState.Asking; }
    TAsking(const TAsking&) = delete;
    TAsking& operator=(const TAsking&) = delete;

   private:
    TState& FState;
  };

  TTopic& TopicOf(const TText& AKey) {
    const auto [place, isNew] = Numbers.try_emplace(AKey.ToString(), Topics.size());
    if (isNew) Topics.push_back({AKey, {}});
    return Topics[place->second].second;
  }

  const TTopic* FindTopic(const TText& AKey) const {
    const auto found = Numbers.find(AKey.ToString());
    return found == Numbers.end() ? nullptr : &Topics[found->second].second;
  }

  void Subscribe(const TText& AKey, const TRtdCellRef& ACell) {
    TTopic& topic = TopicOf(AKey);
    if (ACell.SheetIndex < 0 || !TCellAddress{ACell.Col, ACell.Row}.IsValid()) return;
    if (topic.CellIds.insert(TCellId::Of(ACell.SheetIndex, ACell.Col, ACell.Row).Packed).second)
      topic.Cells.push_back(ACell);
  }

  /// Asks the provider, which may do anything meanwhile, also clear the topics.
  std::optional<TCellValue> Ask(ITessarineRtdProvider& AProvider, const TText& AKey, const TText& AProgId,
                                const TText& AServer, std::span<const TText> ATopics) {
    const TAsking asking(*this);
    try {
      TTopic& topic = TopicOf(AKey);
      if (!std::exchange(topic.IsConnected, true)) AProvider.Connect(AProgId, AServer, ATopics);
      TCellValue value;
      if (AProvider.TryGetValue(AProgId, AServer, ATopics, value)) return StorableValue(std::move(value));
    } catch (const std::exception&) {
      return std::nullopt;  // a source that throws has no value: formulas answer, they do not throw
    }
    return std::nullopt;
  }

  /// The list grows while its cells are evaluated: a copy of it is gone through.
  void Notify(const TText& AKey) {
    const TTopic* topic = FindTopic(AKey);
    if (!topic || !OnDirty) return;
    const std::vector<TRtdCellRef> cells = topic->Cells;
    for (const TRtdCellRef& cell : cells) OnDirty(cell);
  }

  void NotifyOrKeep(const TText& AKey) {
    if (Asking == 0) return Notify(AKey);
    if (PendingKeys.insert(AKey.ToString()).second) Pending.push_back(AKey);
  }

  TDirtyHandler OnDirty;
  std::vector<std::pair<TText, TTopic>> Topics;  // in order of first use
  boost::unordered_flat_map<std::u16string, size_t> Numbers;
  int Asking = 0;
  std::vector<TText> Pending;
  boost::unordered_flat_set<std::u16string> PendingKeys;
};

TTessarineRtdHub::TTessarineRtdHub() : FState(std::make_unique<TState>()) {}

TTessarineRtdHub::~TTessarineRtdHub() = default;

void TTessarineRtdHub::SetOnDirty(TDirtyHandler AHandler) { FState->OnDirty = std::move(AHandler); }

TCellValue TTessarineRtdHub::Evaluate(const TText& AProgId, const TText& AServer, std::span<const TText> ATopics,
                                      const std::shared_ptr<ITessarineRtdProvider>& AProvider,
                                      const TRtdCellRef& ACell) {
  const TRtdTopicKey parts = TRtdTopicKey::Make(AProgId, AServer, ATopics);
  if (parts.ProgId.IsEmpty() || ATopics.empty()) return TCellValue::FromError(ceNA);
  const TText key = parts.ToString();
  FState->Subscribe(key, ACell);
  // A reference of our own: the host may take the provider away while it is asked.
  // NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
  const std::shared_ptr<ITessarineRtdProvider> provider = AProvider;
  std::optional<TCellValue> value;
  if (provider) value = FState->Ask(*provider, key, parts.ProgId, parts.Server, ATopics);
  if (!value) value = TryComGetValue(parts.ProgId, parts.Server, ATopics);
  TState::TTopic& topic = FState->TopicOf(key);
  if (value) topic.LastValue = std::move(value);
  return topic.LastValue ? *topic.LastValue : TCellValue::FromError(ceNA);
}

// Such servers are COM objects with the platform's real-time data interface; where there is no COM none is found.
std::optional<TCellValue> TTessarineRtdHub::TryComGetValue(const TText&, const TText&, std::span<const TText>) {
  return std::nullopt;
}

void TTessarineRtdHub::NotifyUpdate(const TText& AProgId, const TText& AServer, std::span<const TText> ATopics) {
  FState->NotifyOrKeep(TopicKeyStr(AProgId, AServer, ATopics));
}

void TTessarineRtdHub::NotifyUpdateAll() {
  std::vector<TText> keys;
  for (const auto& topic : FState->Topics) keys.push_back(topic.first);
  for (const TText& key : keys) FState->NotifyOrKeep(key);
}

bool TTessarineRtdHub::HasPending() const { return !FState->Pending.empty(); }

void TTessarineRtdHub::DeliverPending() {
  const std::vector<TText> keys = std::exchange(FState->Pending, {});
  FState->PendingKeys.clear();
  for (const TText& key : keys) FState->Notify(key);
}

std::vector<TRtdCellRef> TTessarineRtdHub::Subscribers(const TText& AProgId, const TText& AServer,
                                                       std::span<const TText> ATopics) const {
  const TState::TTopic* topic = FState->FindTopic(TopicKeyStr(AProgId, AServer, ATopics));
  return topic ? topic->Cells : std::vector<TRtdCellRef>();
}

void TTessarineRtdHub::ClearSubscriptions() {
  FState->Topics.clear();
  FState->Numbers.clear();
  FState->Pending.clear();
  FState->PendingKeys.clear();
}

TCellValue EvalRtd(std::span<const TFormulaArg> AArgs, const TFormulaContext& AContext, TTessarineRtdHub* AHub) {
  if (AArgs.size() < 3 || !AHub) return TCellValue::FromError(ceNA);
  std::vector<TText> texts;
  for (const TFormulaArg& arg : AArgs) {
    const TValueView value = arg.FirstView();
    if (value.IsError()) return TCellValue::FromView(value);
    texts.push_back(detail::ArgText(arg));
  }
  const TRtdCellRef cell{AContext.SheetIndex, AContext.EvalCol, AContext.EvalRow};
  return AHub->Evaluate(texts[0], texts[1], std::span(texts).subspan(2),
                        AContext.Workbook ? AContext.Workbook->RtdProvider : nullptr, cell);
}

}  // namespace tessarine
