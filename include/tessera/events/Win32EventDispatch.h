// The window-message dispatcher: events posted from any thread reach the targets on the thread
// that owns a message window, through one registered message per burst of posts.
//
// The owner's message loop hands each message to ProcessMessage; the registered message is
// "Tessera::Win32EventDispatch {CAF20A60-7250-48a6-9E0A-ACE5E4207C66}" with wParam and lParam 0.
// One window serves one dispatcher.
#ifndef TESSERA_EVENTS_WIN32EVENTDISPATCH_H
#define TESSERA_EVENTS_WIN32EVENTDISPATCH_H

#include <boost/shared_ptr.hpp>

#include <tessera_export.h>
#include <tessera/events/EventDispatch.h>
#include <tessera/win32/Window.h>

namespace Tessera {

class Win32EventDispatchImpl;

class TESSERA_API Win32EventDispatch : public EventDispatch {
 public:
  // Usable at once with a window; without one, targets can be registered but posts throw
  // until Initialize gives a window.
  explicit Win32EventDispatch(Win32::HWND window = nullptr);
  // Notices already queued stay in the window's queue and become nobody's.
  ~Win32EventDispatch() override;
  Win32EventDispatch(const Win32EventDispatch&) = delete;
  Win32EventDispatch& operator=(const Win32EventDispatch&) = delete;

  // Gives a (new) window; a null window stops the object taking events. Not locked: call it
  // before posts can come or while no thread posts.
  void Initialize(Win32::HWND window);

  // The registered message number, the same for every dispatcher of the process.
  static Win32::UINT GetMessageId();

  // True when `msg` is this dispatcher's notice for its window; the events are then
  // dispatched. Exceptions of handlers pass through.
  bool ProcessMessage(Win32::MSG& msg);
  // The window procedure's form: the number alone decides.
  bool ProcessMessage(Win32::UINT msg, Win32::WPARAM wParam, Win32::LPARAM lParam);

  // Throws Plaint::LogicError "invalid object state" while there is no window.
  void PostEvent(const boost::shared_ptr<Event>& event) override;
  void RegisterTarget(EventTarget& target) override;
  void UnregisterTarget(EventTarget& target) override;
  bool WithinHandler() const override;

 private:
  Win32EventDispatchImpl* impl;
};

}  // namespace Tessera

#endif  // TESSERA_EVENTS_WIN32EVENTDISPATCH_H
