#include <tessera/internet/Properties.h>

#include <cassert>
#include <memory>
#include <string_view>
#include <utility>

#include <boost/container/small_vector.hpp>
#include <boost/intrusive/set.hpp>

#include <tessera/text/TextCompare.h>

#include "tessera/internet/PropertiesAccess.h"

namespace Tessera {

// The entry is also the node of the lookup tree, so that a key costs one heap block, and the
// tree refers to the key inside it.
struct PropertiesEntry : boost::intrusive::set_base_hook<boost::intrusive::optimize_size<true>> {
  PropertiesEntry(std::string_view k, std::string_view v) : key(k), value(v) {}
  std::string key;
  std::string value;
  unsigned int position = 0;
};

namespace {

// Orders entries by key, and compares them with plain strings without copying.
class KeyLess {
 public:
  explicit KeyLess(bool caseless) : caseless_(caseless) {}

  bool operator()(const PropertiesEntry& a, const PropertiesEntry& b) const { return Less(a.key, b.key); }
  bool operator()(const PropertiesEntry& a, std::string_view b) const { return Less(a.key, b); }
  bool operator()(std::string_view a, const PropertiesEntry& b) const { return Less(a, b.key); }

 private:
  bool Less(std::string_view a, std::string_view b) const {
    const auto lengthA = static_cast<unsigned int>(a.size());
    const auto lengthB = static_cast<unsigned int>(b.size());
    return (caseless_ ? TextCompareCaseless(a.data(), lengthA, b.data(), lengthB)
                      : TextCompare(a.data(), lengthA, b.data(), lengthB)) < 0;
  }

  bool caseless_;
};

}  // namespace

class PropertiesBody {
 public:
  using Lookup = boost::intrusive::set<PropertiesEntry, boost::intrusive::compare<KeyLess>>;

  explicit PropertiesBody(bool caseless) : lookup(KeyLess(caseless)) {}

  // Duplicates `source` with its comparison, each entry at the same position.
  explicit PropertiesBody(const PropertiesBody& source) : lookup(source.lookup.key_comp()) {
    try {
      entries.reserve(source.entries.size());
      for (const PropertiesEntry* entry : source.entries) Append(entry->key, entry->value);
    } catch (...) {
      ReleaseAll();  // no destructor runs for a body that failed to construct
      throw;
    }
  }
  PropertiesBody& operator=(const PropertiesBody&) = delete;

  ~PropertiesBody() { ReleaseAll(); }

  PropertiesEntry* Find(std::string_view key) {
    const auto found = lookup.find(key, lookup.key_comp());
    return found != lookup.end() ? &*found : nullptr;
  }

  // Linking into the tree allocates nothing and cannot fail, so only the first two steps can.
  unsigned int Append(std::string_view key, std::string_view value) {
    auto entry = std::make_unique<PropertiesEntry>(key, value);
    entry->position = static_cast<unsigned int>(entries.size());
    entries.push_back(entry.get());
    lookup.insert(*entry.release());
    return entries.back()->position;
  }

  void Remove(PropertiesEntry* removed) {
    const unsigned int position = removed->position;
    PropertiesEntry* const last = entries.back();
    if (last != removed) {
      last->position = position;
      entries[position] = last;
    }
    lookup.erase(lookup.iterator_to(*removed));
    delete removed;
    entries.pop_back();
  }

  void ReleaseAll() {
    lookup.clear();
    for (auto i = entries.size(); i-- > 0;) delete entries[i];
    entries.clear();
  }

  // Parameter lists and queries are short: their positions live in the body itself.
  boost::container::small_vector<PropertiesEntry*, 4> entries;
  Lookup lookup;
};

Properties::Properties(const Properties& other)
    : body_(other.body_ != nullptr ? new PropertiesBody(*other.body_) : nullptr),
      caseless_(other.caseless_) {}

Properties& Properties::operator=(const Properties& other) {
  if (this == &other) return *this;
  PropertiesBody* copy = other.body_ != nullptr ? new PropertiesBody(*other.body_) : nullptr;
  delete body_;
  body_ = copy;
  caseless_ = other.caseless_;
  return *this;
}

Properties::~Properties() { delete body_; }

unsigned int Properties::Set(const std::string& key, const std::string& value) {
  return detail::PropertiesAccess::Set(*this, key, value);
}

unsigned int detail::PropertiesAccess::Set(Properties& properties, std::string_view key,
                                           std::string_view value) {
  PropertiesBody*& body = properties.body_;
  if (body == nullptr) body = new PropertiesBody(properties.caseless_);
  PropertiesEntry* const found = body->Find(key);
  if (found == nullptr) return body->Append(key, value);
  found->value.assign(value.data(), value.size());
  return found->position;
}

const std::string* Properties::Find(const std::string& key, unsigned int& position) const {
  PropertiesEntry* const found = body_ != nullptr ? body_->Find(key) : nullptr;
  if (found == nullptr) return nullptr;
  position = found->position;
  return &found->value;
}

const std::string* Properties::Get(const std::string& key) const {
  unsigned int position;
  return Find(key, position);
}

std::string* Properties::Access(const std::string& key) {
  return const_cast<std::string*>(Get(key));
}

bool Properties::Get(const std::string& key, std::string& value) const {
  const std::string* found = Get(key);
  if (found == nullptr) return false;
  value = *found;
  return true;
}

unsigned int Properties::GetCount() const {
  return body_ != nullptr ? static_cast<unsigned int>(body_->entries.size()) : 0;
}

const std::string& Properties::GetKey(unsigned int position) const {
  assert(position < GetCount());
  return body_->entries[position]->key;
}

const std::string& Properties::GetValue(unsigned int position) const {
  assert(position < GetCount());
  return body_->entries[position]->value;
}

std::string& Properties::AccessValue(unsigned int position) {
  assert(position < GetCount());
  return body_->entries[position]->value;
}

void Properties::Remove(unsigned int position) {
  if (position < GetCount()) body_->Remove(body_->entries[position]);
}

void Properties::Remove(const std::string& key) {
  PropertiesEntry* const found = body_ != nullptr ? body_->Find(key) : nullptr;
  if (found != nullptr) body_->Remove(found);
}

void Properties::Clear() {
  if (body_ != nullptr) body_->ReleaseAll();
}

void Properties::Swap(Properties& other) noexcept {
  std::swap(body_, other.body_);
  std::swap(caseless_, other.caseless_);
}

}  // namespace Tessera
