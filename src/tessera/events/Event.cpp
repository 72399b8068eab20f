#include <tessera/events/Event.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <new>

#include <tessera/memory/Buffer.h>
#include <tessera/text/TextCompare.h>

namespace Tessera {

// ---- EventId ----

void EventId::Init(const char* source, unsigned int length, bool isStatic) {
  if (length == 0xFFFFFFFFu) length = static_cast<unsigned int>(std::strlen(source));
  if (isStatic) {
    text = const_cast<char*>(source);  // borrowed, never written or freed
    value = length | staticFlag;
    return;
  }
  text = static_cast<char*>(std::malloc(std::size_t{length} + 1));
  if (text == nullptr) throw std::bad_alloc();
  std::memcpy(text, source, length);
  text[length] = '\0';
  value = length;
}

void EventId::Destroy() {
  if (text != nullptr && (value & staticFlag) == 0) std::free(text);
}

EventId::EventId(const EventId& other) {
  if (other.text == nullptr || (other.value & staticFlag) != 0) {
    text = other.text;
    value = other.value;
  } else {
    Init(other.text, other.value, false);
  }
}

EventId& EventId::operator=(const EventId& other) {
  if (this == &other) return *this;
  EventId copy(other);
  Destroy();
  text = copy.text;
  value = copy.value;
  copy.text = nullptr;  // the copy's text now belongs to this
  return *this;
}

bool operator==(const EventId& a, const EventId& b) {
  if (&a == &b) return true;
  if ((a.text == nullptr) != (b.text == nullptr)) return false;
  if (a.text == nullptr) return a.value == b.value;
  return TextCompare(a.text, a.GetLength(), b.text, b.GetLength()) == 0;
}

bool operator==(const EventId& id, const char* text) {
  if (!id.IsText()) return false;
  const std::size_t length = std::strlen(text);
  return length == id.GetLength() && std::memcmp(id.GetText(), text, length) == 0;
}

bool operator==(const EventId& id, const std::string& text) {
  return id.IsText() &&
         TextCompare(id.GetText(), id.GetLength(), text.data(), static_cast<unsigned int>(text.size())) == 0;
}

bool operator==(const EventId& id, std::uint32_t number) { return !id.IsText() && id.GetNumber() == number; }

// ---- Event and its pool ----

namespace {

// The pool is made on first use (once, also when threads race to it) and dies at exit.
// Events made after that come unpooled from the heap, and go back the same way.
std::atomic<bool> eventPoolGone{false};

struct EventPoolHolder {
  BufferPool pool{static_cast<std::uint32_t>(Event::pooledSizeLimit), BufferPool::bufferCountDefault};
  ~EventPoolHolder() { eventPoolGone.store(true, std::memory_order_relaxed); }
};

BufferPool* EventPool() {
  static EventPoolHolder holder;
  return eventPoolGone.load(std::memory_order_relaxed) ? nullptr : &holder.pool;
}

}  // namespace

Event::~Event() {
  // A pulled event keeps its follower alive, and that one its own: a puller that held one event
  // while others pulled thousands would free them by a recursion as deep as the chain. Followers
  // owned by nobody else are taken apart here in a loop instead.
  boost::shared_ptr<Event> follower = std::move(next);
  while (follower && follower.use_count() == 1) {
    boost::shared_ptr<Event> after = std::move(follower->next);
    follower = std::move(after);
  }
}

void Event::MarkHandled() {}

void* Event::operator new(std::size_t size) {
  if (size > pooledSizeLimit) return ::operator new(size);
  BufferPool* pool = EventPool();
  Buffer block = pool != nullptr ? pool->Allocate() : Buffer(static_cast<std::uint32_t>(size));
  return Buffer::Unbind(block);
}

void Event::operator delete(void* memory, std::size_t size) {
  if (size > pooledSizeLimit) {
    ::operator delete(memory);
    return;
  }
  Buffer::Bind(memory);  // the handle takes the reference over and drops it at once
}

// ---- AnyEvent, EventInterface, EventListImpl ----

AnyEvent::Content::~Content() = default;

AnyEvent& AnyEvent::operator=(const AnyEvent& other) {
  Content* copy = other.content != nullptr ? other.content->Clone() : nullptr;
  delete content;
  content = copy;
  return *this;
}

void EventInterface::PostEvent(const boost::shared_ptr<Event>& event) const {
  if (sink == nullptr) return;
  event->SetTarget(target);
  sink->PostEvent(event);
}

EventListImpl::~EventListImpl() {
  tail.reset();
  // Each event is let go on its own: releasing the head alone would recurse through the links.
  while (head) {
    boost::shared_ptr<Event> next = head->next;
    head = std::move(next);
  }
}

}  // namespace Tessera
