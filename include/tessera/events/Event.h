// Events: identifiers, event objects, the sink and target contracts and the intrusive list.
//
// An Event names what happened (EventId: a number or a text) and whom it is for (an
// EventTarget, or null for everybody). Events travel as boost::shared_ptr<Event> and carry
// their own link, so queueing one allocates nothing; events of up to ten pointer widths (80
// bytes on 64-bit) come from one process-wide pool.
#ifndef TESSERA_EVENTS_EVENT_H
#define TESSERA_EVENTS_EVENT_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <typeinfo>
#include <utility>

#include <boost/shared_ptr.hpp>

#include <tessera_export.h>

namespace Tessera {

// A number, or a text that is owned (a malloc copy) or static (borrowed from the caller), in
// two fields. Copies of an owned text are made before the old text is freed.
class TESSERA_API EventId {
 public:
  // Top bit of `value` for a text identifier: the text is borrowed, never freed.
  static constexpr std::uint32_t staticFlag = 0x80000000u;

  // A number identifier; all 32 bits are the number.
  EventId(std::uint32_t number) : text(nullptr), value(number) {}  // NOLINT: numbers name events
  // A text identifier. A `length` of 0xFFFFFFFF measures the terminated text. A static text
  // is borrowed; otherwise it is copied. Throws std::bad_alloc when the copy is refused.
  EventId(const char* name, unsigned int length, bool isStatic) { Init(name, length, isStatic); }
  // A text identifier that owns a copy of `text`.
  EventId(const std::string& name) {  // NOLINT: texts name events
    Init(name.data(), static_cast<unsigned int>(name.size()), false);
  }
  // A number stays a number, an owned text is copied, a static text shares the pointer.
  EventId(const EventId& other);
  // Copies first, then frees the old text: a refused allocation leaves this as it was.
  EventId& operator=(const EventId& other);
  // Convenience: takes the text without copying it; `other` is left the number 0.
  EventId(EventId&& other) noexcept : text(other.text), value(other.value) {
    other.text = nullptr;
    other.value = 0;
  }
  // Convenience: exchanges the identifiers; `other` is left with the old one.
  EventId& operator=(EventId&& other) noexcept {
    std::swap(text, other.text);
    std::swap(value, other.value);
    return *this;
  }
  ~EventId() { Destroy(); }

  bool IsText() const { return text != nullptr; }
  bool IsStatic() const { return text != nullptr && (value & staticFlag) != 0; }
  // The text (null for a number) and its length in chars.
  const char* GetText() const { return text; }
  unsigned int GetLength() const { return text != nullptr ? value & ~staticFlag : 0; }
  // The number; meaningful for a number identifier only.
  std::uint32_t GetNumber() const { return value; }

 private:
  friend TESSERA_API bool operator==(const EventId&, const EventId&);

  void Init(const char* source, unsigned int length, bool isStatic);
  void Destroy();

  char* text;
  std::uint32_t value;
};

// Same object; two texts equal char for char (static or not); two equal numbers. A text
// never equals a number, and no case is folded.
TESSERA_API bool operator==(const EventId& a, const EventId& b);
// A text identifier with exactly these chars; false for a number.
TESSERA_API bool operator==(const EventId& id, const char* text);
TESSERA_API bool operator==(const EventId& id, const std::string& text);
// A number identifier with this number; false for a text.
TESSERA_API bool operator==(const EventId& id, std::uint32_t number);

class EventTarget;

// A posted thing. Clients derive their events from it and add fields; up to ten pointer
// widths the class operator new serves them from the event pool, larger ones from the heap.
class TESSERA_API Event {
 public:
  explicit Event(const EventId& identifier) : id(identifier), target(nullptr) {}
  // Copies id, target and link: the copy of a linked event is linked to the same follower.
  Event(const Event&) = default;
  Event& operator=(const Event&) = default;
  virtual ~Event();
  // A hook for derived events and their handlers; the library never calls it.
  virtual void MarkHandled();

  const EventId& GetId() const { return id; }
  EventTarget* GetTarget() const { return target; }
  void SetTarget(EventTarget* newTarget) { target = newTarget; }
  bool Match(const char* text) const { return id == text; }
  bool Match(const std::string& text) const { return id == text; }

  // Up to ten pointer widths from the event pool, made once on first use; larger from the
  // heap. Throws std::bad_alloc (Plaint::BadAlloc from the pool) when memory is refused.
  static void* operator new(std::size_t size);
  // Gives the block back by the path `size` chose in operator new.
  static void operator delete(void* memory, std::size_t size);

  static constexpr std::size_t pooledSizeLimit = 10 * sizeof(void*);

 private:
  friend class EventListImpl;

  EventId id;
  EventTarget* target;  // not owned; null means every target
  boost::shared_ptr<Event> next;
};

// A value-like owner of one polymorphic object: copies clone it, destruction destroys it.
class TESSERA_API AnyEvent {
 public:
  // What an AnyEvent holds; client classes fill it.
  class TESSERA_API Content {
   public:
    virtual ~Content();
    virtual const std::type_info& GetType() const = 0;
    // A new object of the same kind; the caller owns it.
    virtual Content* Clone() const = 0;
  };

  AnyEvent() : content(nullptr) {}
  // Takes ownership of `adopted`, which may be null.
  explicit AnyEvent(Content* adopted) : content(adopted) {}
  AnyEvent(const AnyEvent& other) : content(other.content != nullptr ? other.content->Clone() : nullptr) {}
  // Clones the source first, then destroys the old content.
  AnyEvent& operator=(const AnyEvent& other);
  ~AnyEvent() { delete content; }
  // Convenience: takes the content without cloning it; `other` is left empty.
  AnyEvent(AnyEvent&& other) noexcept : content(other.content) { other.content = nullptr; }
  // Convenience: exchanges the contents; `other` is left with the old one.
  AnyEvent& operator=(AnyEvent&& other) noexcept {
    std::swap(content, other.content);
    return *this;
  }

  Content* GetContent() const { return content; }
  bool IsEmpty() const { return content == nullptr; }

 private:
  Content* content;
};

// Receives events. Targets are held by plain pointer and never owned or deleted by the library.
class TESSERA_API EventTarget {
 public:
  virtual void HandleEvent(Event& event) = 0;

 protected:
  EventTarget() = default;
  EventTarget(const EventTarget&) = default;
  EventTarget& operator=(const EventTarget&) = default;
  ~EventTarget() = default;
};

// Takes events from any thread.
class TESSERA_API EventSink {
 public:
  virtual void PostEvent(const boost::shared_ptr<Event>& event) = 0;

 protected:
  EventSink() = default;
  EventSink(const EventSink&) = default;
  EventSink& operator=(const EventSink&) = default;
  ~EventSink() = default;
};

// A ready-made address: a target and the sink that serves it. Neither is owned.
class TESSERA_API EventInterface {
 public:
  EventInterface(EventTarget* to = nullptr, EventSink* via = nullptr) : target(to), sink(via) {}  // NOLINT

  EventTarget* GetTarget() const { return target; }
  EventSink* GetSink() const { return sink; }
  // Addresses `event` (not null) to the target and posts it to the sink; with no sink the
  // event is swallowed and left as it was.
  void PostEvent(const boost::shared_ptr<Event>& event) const;

 private:
  EventTarget* target;
  EventSink* sink;
};

// The intrusive list: first in, first out, linked through the events themselves. Not locked.
class TESSERA_API EventListImpl {
 public:
  EventListImpl() = default;
  EventListImpl(const EventListImpl&) = delete;
  EventListImpl& operator=(const EventListImpl&) = delete;
  // Releases the events one by one in a loop, so a long list needs no deep stack.
  ~EventListImpl();

  bool IsEmpty() const { return !head; }
  // Links `event` at the tail; a null event, or one whose link is set, is left out.
  void PostEvent(const boost::shared_ptr<Event>& event) {
    if (!event || event->next) return;
    (tail ? tail->next : head) = event;
    tail = event;
  }
  // The head, or null. The pulled event keeps its link to its follower (and so can't be
  // posted again) until it dies; the last event of the list comes out free.
  boost::shared_ptr<Event> PullEvent() {
    boost::shared_ptr<Event> event(std::move(head));
    if (!event) return event;
    head = event->next;
    if (!head) tail.reset();
    return event;
  }

 private:
  boost::shared_ptr<Event> head;
  boost::shared_ptr<Event> tail;
};

}  // namespace Tessera

#endif  // TESSERA_EVENTS_EVENT_H
