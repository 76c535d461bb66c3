#include <tessarine/platform/Locale.h>

#include <atomic>
#include <mutex>
#include <utility>

namespace tessarine {

namespace {

struct TSettingsBlock {
  TFormatSettings Settings;
  TSettingsBlock* Next = nullptr;  // all blocks of the process, newest first; none is ever freed
};

struct TSettingsStore {
  std::mutex Mutex;                 // guards First and the writing of Current and Version
  TSettingsBlock* First = nullptr;  // the initial block is in the list as well
  std::atomic<const TFormatSettings*> Current{nullptr};
  std::atomic<uint64_t> Version{1};

  TSettingsStore() {
    First = new TSettingsBlock;
    Current.store(&First->Settings, std::memory_order_release);
  }
};

/// Never destroyed: hosts may still format while static objects are torn down.
TSettingsStore& SettingsStore() {
  static TSettingsStore& store = *new TSettingsStore;
  return store;
}

const TFormatSettings* FindOrAddBlock(TSettingsStore& AStore, TFormatSettings&& ASettings) {
  for (const TSettingsBlock* block = AStore.First; block != nullptr; block = block->Next)
    if (block->Settings == ASettings) return &block->Settings;
  AStore.First = new TSettingsBlock{std::move(ASettings), AStore.First};
  return &AStore.First->Settings;
}

}  // namespace

const TFormatSettings& CurrentFormatSettings() { return *SettingsStore().Current.load(std::memory_order_acquire); }

void SetDefaultFormatSettings(TFormatSettings ASettings) {
  TSettingsStore& store = SettingsStore();
  const std::scoped_lock lock(store.Mutex);
  const TFormatSettings* settings = FindOrAddBlock(store, std::move(ASettings));
  if (settings == store.Current.load(std::memory_order_relaxed)) return;
  store.Current.store(settings, std::memory_order_release);
  store.Version.fetch_add(1, std::memory_order_release);
}

uint64_t FormatSettingsVersion() { return SettingsStore().Version.load(std::memory_order_acquire); }

}  // namespace tessarine
