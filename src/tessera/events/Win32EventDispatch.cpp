#include <tessera/events/Win32EventDispatch.h>

#include <atomic>

namespace Tessera {

class Win32EventDispatchImpl final : public EventDispatchMixIn {
 public:
  Win32EventDispatchImpl() : EventDispatchMixIn(false) {}

  using EventDispatchMixIn::HandleNotify;

  Win32::HWND window = nullptr;

 private:
  void PostNotify(Skein::Guard<Skein::Lock>&) override {
    // A failed post leaves the events listed until some later notice drains them.
    Win32::PostMessageA(window, Win32EventDispatch::GetMessageId(), 0, 0);
  }

  void CancelNotify(Skein::Guard<Skein::Lock>&) override {
    const Win32::UINT id = Win32EventDispatch::GetMessageId();
    Win32::MSG spare;
    while (Win32::PeekMessageA(&spare, window, id, id, Win32::PM_REMOVE | Win32::PM_NOYIELD) != 0) {
    }
  }
};

Win32EventDispatch::Win32EventDispatch(Win32::HWND window) : impl(new Win32EventDispatchImpl) {
  impl->window = window;
  impl->SetInitialized(window != nullptr);
}

Win32EventDispatch::~Win32EventDispatch() { delete impl; }

void Win32EventDispatch::Initialize(Win32::HWND window) {
  impl->window = window;
  impl->SetInitialized(window != nullptr);
}

Win32::UINT Win32EventDispatch::GetMessageId() {
  // Racing first callers get the same number from the registry, so a plain cache will do.
  static std::atomic<Win32::UINT> id{0};
  Win32::UINT known = id.load(std::memory_order_relaxed);
  if (known == 0) {
    known = Win32::RegisterWindowMessageA("Tessera::Win32EventDispatch {CAF20A60-7250-48a6-9E0A-ACE5E4207C66}");
    id.store(known, std::memory_order_relaxed);
  }
  return known;
}

bool Win32EventDispatch::ProcessMessage(Win32::MSG& msg) {
  if (msg.hwnd != impl->window || msg.message != GetMessageId()) return false;
  impl->HandleNotify();
  return true;
}

bool Win32EventDispatch::ProcessMessage(Win32::UINT msg, Win32::WPARAM, Win32::LPARAM) {
  if (msg != GetMessageId()) return false;
  impl->HandleNotify();
  return true;
}

void Win32EventDispatch::PostEvent(const boost::shared_ptr<Event>& event) { impl->PostEvent(event); }
void Win32EventDispatch::RegisterTarget(EventTarget& target) { impl->RegisterTarget(target); }
void Win32EventDispatch::UnregisterTarget(EventTarget& target) { impl->UnregisterTarget(target); }
bool Win32EventDispatch::WithinHandler() const { return impl->WithinHandler(); }

}  // namespace Tessera
