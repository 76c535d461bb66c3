#include <tessarine/platform/FileLayer.h>

#include <atomic>

#include <tessarine/platform/detail/SystemFileLayer.h>

namespace tessarine {

namespace {

std::atomic<IFileLayer*> gFileLayer{nullptr};  // null: that of the system

}  // namespace

IFileLayer::~IFileLayer() = default;

IFileLayer& CurrentFileLayer() {
  IFileLayer* layer = gFileLayer.load(std::memory_order_acquire);
  return layer != nullptr ? *layer : detail::SystemFileLayer();
}

IFileLayer* SetFileLayer(IFileLayer* ALayer) { return gFileLayer.exchange(ALayer, std::memory_order_acq_rel); }

}  // namespace tessarine
