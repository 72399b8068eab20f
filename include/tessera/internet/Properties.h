// Properties: a key/value collection of narrow strings with two views at once, lookup by key
// and access by position. Positions follow the order in which keys were first set; keys are
// unique under one comparison fixed per object, exact (TextCompare) or caseless
// (TextCompareCaseless).
//
// Each entry is a heap object of its own, so a pointer or reference to a key or value stays
// good until that entry is removed or the collection is cleared, assigned to or destroyed.
// Removal moves only the last entry into the freed position. An object that was never set
// allocates nothing. No lookup or removal throws: absent keys give null or false, positions out
// of range do nothing. Only allocation fails, with std::bad_alloc, and `Set` and assignment
// then leave the collection as it was.
#ifndef TESSERA_INTERNET_PROPERTIES_H
#define TESSERA_INTERNET_PROPERTIES_H

#include <string>

#include <tessera_export.h>

namespace Tessera {

class PropertiesBody;
namespace detail {
struct PropertiesAccess;
}

class TESSERA_API Properties {
 public:
  // No body yet; keys will compare caselessly when `caseless` is true.
  explicit Properties(bool caseless = false) : body_(nullptr), caseless_(caseless) {}
  // Takes the flag and duplicates every entry, each at the same position.
  Properties(const Properties& other);
  // Convenience: takes the body and flag; `other` is left without a body.
  Properties(Properties&& other) noexcept : body_(other.body_), caseless_(other.caseless_) {
    other.body_ = nullptr;
  }
  // Takes `other`'s flag and a duplicate of its entries, or no body when it has none. The
  // duplicate is built before the old body goes, so a refused allocation changes nothing.
  Properties& operator=(const Properties& other);
  // Convenience: as Swap with `other`.
  Properties& operator=(Properties&& other) noexcept {
    Swap(other);
    return *this;
  }
  ~Properties();

  // Gives the entry's position. An existing key keeps its first-stored text and position and
  // takes the new value; a new key is appended.
  unsigned int Set(const std::string& key, const std::string& value);

  // The value and its position, or null with `position` untouched.
  [[nodiscard]] const std::string* Find(const std::string& key, unsigned int& position) const;
  // The value, or null.
  [[nodiscard]] const std::string* Get(const std::string& key) const;
  // The writable value, or null; never inserts.
  [[nodiscard]] std::string* Access(const std::string& key);
  // True and `value` assigned, or false with `value` untouched.
  [[nodiscard]] bool Get(const std::string& key, std::string& value) const;
  bool Has(const std::string& key) const { return Get(key) != nullptr; }

  unsigned int GetCount() const;
  bool Empty() const { return GetCount() == 0; }
  bool IsCaseless() const { return caseless_; }

  // Precondition for the three: `position` is below GetCount().
  const std::string& GetKey(unsigned int position) const;
  const std::string& GetValue(unsigned int position) const;
  std::string& AccessValue(unsigned int position);

  // The last entry moves into the freed position; every other entry keeps its position.
  // A position at or past the count, or an absent key, does nothing.
  void Remove(unsigned int position);
  void Remove(const std::string& key);
  // Removes every entry; an existing body stays, empty, and the flag stays.
  void Clear();
  // Exchanges bodies and flags; allocates nothing.
  void Swap(Properties& other) noexcept;

 private:
  friend struct detail::PropertiesAccess;

  PropertiesBody* body_;
  bool caseless_;
};

}  // namespace Tessera

#endif  // TESSERA_INTERNET_PROPERTIES_H
