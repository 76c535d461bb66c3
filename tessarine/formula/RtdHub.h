#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include <tessarine/Export.h>
#include <tessarine/core/values/CellValue.h>
#include <tessarine/formula/FormulaArg.h>

namespace tessarine {

class ITessarineRtdProvider;

/// What identifies a subscription.
struct TESSARINE_API TRtdTopicKey {
  TText ProgId;
  TText Server;
  TText TopicsKey;  // all topics in one text, different for different lists

  static TRtdTopicKey Make(const TText& AProgId, const TText& AServer, std::span<const TText> ATopics);

  /// The whole key as a text, different for different keys.
  TText ToString() const;

  friend bool operator==(const TRtdTopicKey&, const TRtdTopicKey&) = default;
};

/// A cell that shows a topic; column and row 1-based.
struct TRtdCellRef {
  int32_t SheetIndex = -1;
  int32_t Col = 0;
  int32_t Row = 0;

  friend bool operator==(const TRtdCellRef&, const TRtdCellRef&) = default;
};

/// Knows which cells show which real-time topic, and asks the source for values. Belongs to an evaluator and is used on
/// its thread; a source that reports a change from another thread hands it over to that thread first.
///
/// Cells are never unsubscribed one by one: notifying one that has another formula by now merely evaluates that.
class TESSARINE_API TTessarineRtdHub {
 public:
  using TDirtyHandler = std::function<void(const TRtdCellRef& ACell)>;

  TTessarineRtdHub();
  ~TTessarineRtdHub();
  TTessarineRtdHub(const TTessarineRtdHub&) = delete;
  TTessarineRtdHub& operator=(const TTessarineRtdHub&) = delete;

  /// Called for each cell whose topic has changed.
  void SetOnDirty(TDirtyHandler AHandler);

  static TText TopicKeyStr(const TText& AProgId, const TText& AServer, std::span<const TText> ATopics) {
    return TRtdTopicKey::Make(AProgId, AServer, ATopics).ToString();
  }

  /// The value of a topic for the cell, which is subscribed to it (a cell without a place is not). The provider, which
  /// may be null, is asked first and connected once per topic, then TryComGetValue. When both fail, also by an
  /// exception: the last value that was got, else #N/A.
  TCellValue Evaluate(const TText& AProgId, const TText& AServer, std::span<const TText> ATopics,
                      const std::shared_ptr<ITessarineRtdProvider>& AProvider, const TRtdCellRef& ACell);

  /// The topic's value from a server that the system itself knows under AProgId; nothing where systems know none.
  std::optional<TCellValue> TryComGetValue(const TText& AProgId, const TText& AServer, std::span<const TText> ATopics);

  /// The source tells that a topic has a new value: its cells are evaluated. Comes such a call out of a provider that
  /// is being asked for a value, it is kept for DeliverPending.
  void NotifyUpdate(const TText& AProgId, const TText& AServer, std::span<const TText> ATopics);
  void NotifyUpdateAll();

  bool HasPending() const;
  /// Carries out the notifications kept so far; those that come meanwhile wait for the next call.
  void DeliverPending();

  /// The cells of a topic in order of subscription.
  std::vector<TRtdCellRef> Subscribers(const TText& AProgId, const TText& AServer,
                                       std::span<const TText> ATopics) const;

  /// Forgets cells, values and connections.
  void ClearSubscriptions();

 private:
  struct TState;
  std::unique_ptr<TState> FState;
};

/// The function RTD(progid, server, topic1, ...): subscribes the cell entered last. #N/A for fewer than 3 arguments or
/// without a hub; an error among the arguments is the result.
TESSARINE_API TCellValue EvalRtd(std::span<const TFormulaArg> AArgs, const TFormulaContext& AContext,
                                 TTessarineRtdHub* AHub);

}  // namespace tessarine
