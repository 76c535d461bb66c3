#include <tessarine/io/xlsx/detail/XlsxRowsWriter.h>

#include <atomic>
#include <future>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/io/xlsx/detail/XlsxMarkupWriter.h>
#include <tessarine/io/xlsx/detail/XlsxPlanWriter.h>

namespace tessarine::detail {

namespace {

constexpr size_t kBytesPerCell = 48;  // about; once some are written, these tell
constexpr size_t kPiecesWorthAThread = 4;
constexpr size_t kPiecesAhead = 6;  // that wait for being joined; a piece has some 700 KB

/// A piece of the sheet with the cells above it and in it.
struct TPiece {
  TXlsxBand Band;
  size_t CellsAbove = 0;
  size_t Cells = 0;
};

std::vector<TPiece> PiecesOf(const TWorksheet& ASheet, std::span<const TXlsxRowCut> ACuts) {
  std::vector<TPiece> pieces(1);
  for (const TXlsxRowCut& cut : ACuts) {
    TPiece& last = pieces.back();
    last.Band.LastRow = cut.Row - 1;
    last.Cells = cut.Cells - last.CellsAbove;
    pieces.push_back({.Band = {.FirstRow = cut.Row, .FirstString = cut.Strings}, .CellsAbove = cut.Cells});
  }
  pieces.back().Cells = ASheet.Store().CellCount() - pieces.back().CellsAbove;
  return pieces;
}

/// Two threads take the pieces of a sheet one by one from the front. Their texts are joined in order while the work
/// goes on, so few of them exist at any time.
class TTwoThreads {
 public:
  TTwoThreads(const TWorksheet& ASheet, const TXlsxCellOptions& AOptions, std::span<const TPiece> APieces)
      : FCells(ASheet.Store().CellCount()),
        FPieces(APieces),
        FTexts(APieces.size()),
        FFront(ASheet, AOptions),
        FBack(ASheet, AOptions) {}

  /// False when there is no thread to be had; nothing is appended then.
  bool TryAppend(const std::function<void(double AFraction)>& AProgress, std::string& AOut) {
    std::future<void> back;
    const TDropAtEnd drop{*this};  // goes before the future, which waits for its thread
    try {
      back = std::async(std::launch::async, [this] {
        while (const auto taken = Take()) {
          WaitFor(*taken);
          Build(*taken, FBack);
        }
      });
    } catch (const std::system_error&) {
      return false;
    }
    const size_t start = AOut.size();
    while (const auto taken = Take()) {
      const TPiece& piece = FPieces[*taken];
      if (*taken == FJoined) {
        ReserveForRest(piece.CellsAbove, FCells, AOut.size() - start, kBytesPerCell, AOut);
        FFront.Append(piece.Band, AOut);
        SetJoined(*taken + 1);
      } else {
        Build(*taken, FFront);
      }
      Join(AOut);
      if (AProgress) AProgress(static_cast<double>(piece.CellsAbove + piece.Cells) / static_cast<double>(FCells));
    }
    back.get();
    Join(AOut);
    return true;
  }

 private:
  struct TPieceText {
    std::string Units;
    std::atomic<bool> IsDone = false;
  };
  /// Nothing is left to take when the work ends early.
  struct TDropAtEnd {
    TTwoThreads& Work;
    ~TDropAtEnd() {
      Work.FTaken = Work.FPieces.size();
      Work.SetJoined(Work.FPieces.size());
    }
  };

  std::optional<size_t> Take() {
    const size_t taken = FTaken++;
    return taken < FPieces.size() ? std::optional(taken) : std::nullopt;
  }

  void Build(size_t AIndex, TXlsxCellWriter& AWriter) {
    TPieceText& text = FTexts[AIndex];
    text.Units.reserve(FPieces[AIndex].Cells * kBytesPerCell);
    AWriter.Append(FPieces[AIndex].Band, text.Units);
    text.IsDone = true;
  }

  /// Until AIndex is no more than some pieces ahead of what AOut has. All between is done then or in the work of the
  /// thread that joins.
  void WaitFor(size_t AIndex) {
    for (size_t joined = FJoined; AIndex >= joined + kPiecesAhead; joined = FJoined) FJoined.wait(joined);
  }

  void SetJoined(size_t ACount) {
    FJoined = ACount;
    FJoined.notify_one();
  }

  /// Appends what is done up to the first piece that is not.
  void Join(std::string& AOut) {
    for (size_t at = FJoined; at < FTexts.size() && FTexts[at].IsDone; SetJoined(++at)) {
      const std::string units = std::move(FTexts[at].Units);  // gone when it is appended
      AOut += units;
    }
  }

  size_t FCells;
  std::span<const TPiece> FPieces;
  std::vector<TPieceText> FTexts;
  TXlsxCellWriter FFront;
  TXlsxCellWriter FBack;
  std::atomic<size_t> FTaken = 0;
  std::atomic<size_t> FJoined = 0;  // pieces that AOut has; only the thread that joins writes it
};

/// The same pieces one after the other.
void AppendOnOneThread(const TWorksheet& ASheet, const TXlsxCellOptions& AOptions, std::span<const TPiece> APieces,
                       const std::function<void(double AFraction)>& AProgress, std::string& AOut) {
  const size_t all = ASheet.Store().CellCount();
  const size_t start = AOut.size();
  TXlsxCellWriter writer(ASheet, AOptions);
  for (const TPiece& piece : APieces) {
    ReserveForRest(piece.CellsAbove, all, AOut.size() - start, kBytesPerCell, AOut);
    writer.Append(piece.Band, AOut);
    if (AProgress && all > 0) AProgress(static_cast<double>(piece.CellsAbove + piece.Cells) / static_cast<double>(all));
  }
}

template <class TBuild>
void AppendElement(std::string& AOut, TBuild&& ABuild) {
  const size_t start = AOut.size();
  AOut += "<sheetData>";
  const size_t empty = AOut.size();
  ABuild();
  if (AOut.size() == empty) {
    AOut.resize(start);
    AOut += "<sheetData/>";
  } else {
    AOut += "</sheetData>";
  }
}

}  // namespace

void AppendXlsxRows(const TWorksheet& ASheet, const TXlsxCellOptions& AOptions, std::span<const TXlsxRowCut> ACuts,
                    const std::function<void(double AFraction)>& AProgress, std::string& AOut) {
  const std::vector<TPiece> pieces = PiecesOf(ASheet, ACuts);
  AppendElement(AOut, [&] {
    const bool isLarge = pieces.size() >= kPiecesWorthAThread && std::thread::hardware_concurrency() > 1;
    if (!isLarge || !TTwoThreads(ASheet, AOptions, pieces).TryAppend(AProgress, AOut))
      AppendOnOneThread(ASheet, AOptions, pieces, AProgress, AOut);
  });
}

void AppendXlsxRowsPlain(const TWorksheet& ASheet, const TXlsxCellOptions& AOptions, std::string& AOut) {
  AppendElement(AOut, [&] { TXlsxCellWriter(ASheet, AOptions).Append({}, AOut); });
}

}  // namespace tessarine::detail
