#include <tessera/internet/Properties.h>

#include <cassert>
#include <map>
#include <memory>
#include <utility>
#include <vector>

#include <tessera/text/TextCompare.h>

namespace Tessera {

struct PropertiesEntry {
  PropertiesEntry(const std::string& k, const std::string& v) : key(k), value(v) {}
  std::string key;
  std::string value;
};

namespace {

// Orders references to keys, and compares them with plain strings without copying.
class KeyLess {
 public:
  using is_transparent = void;

  explicit KeyLess(bool caseless) : caseless_(caseless) {}
  bool Caseless() const { return caseless_; }

  bool operator()(const std::string* a, const std::string* b) const { return Less(*a, *b); }
  bool operator()(const std::string* a, const std::string& b) const { return Less(*a, b); }
  bool operator()(const std::string& a, const std::string* b) const { return Less(a, *b); }

 private:
  bool Less(const std::string& a, const std::string& b) const {
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
  using Lookup = std::map<const std::string*, unsigned int, KeyLess>;

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

  unsigned int Append(const std::string& key, const std::string& value) {
    auto entry = std::make_unique<PropertiesEntry>(key, value);
    const auto position = static_cast<unsigned int>(entries.size());
    entries.push_back(entry.get());
    try {
      lookup.emplace(&entry->key, position);
    } catch (...) {
      entries.pop_back();
      throw;
    }
    entry.release();
    return position;
  }

  void RemoveAt(Lookup::iterator removed) {
    const unsigned int position = removed->second;
    const auto last = static_cast<unsigned int>(entries.size() - 1);
    if (position != last) {
      const auto moved = lookup.find(&entries[last]->key);
      std::swap(removed->second, moved->second);
      std::swap(entries[position], entries[last]);
    }
    lookup.erase(removed);
    delete entries.back();
    entries.pop_back();
  }

  void ReleaseAll() {
    lookup.clear();
    for (auto i = entries.size(); i-- > 0;) delete entries[i];
    entries.clear();
  }

  std::vector<PropertiesEntry*> entries;
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
  if (body_ == nullptr) body_ = new PropertiesBody(caseless_);
  const auto found = body_->lookup.find(key);
  if (found == body_->lookup.end()) return body_->Append(key, value);
  body_->entries[found->second]->value = value;
  return found->second;
}

const std::string* Properties::Find(const std::string& key, unsigned int& position) const {
  if (body_ == nullptr) return nullptr;
  const auto found = body_->lookup.find(key);
  if (found == body_->lookup.end()) return nullptr;
  position = found->second;
  return &body_->entries[found->second]->value;
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
  if (position >= GetCount()) return;
  body_->RemoveAt(body_->lookup.find(&body_->entries[position]->key));
}

void Properties::Remove(const std::string& key) {
  if (body_ == nullptr) return;
  const auto found = body_->lookup.find(key);
  if (found != body_->lookup.end()) body_->RemoveAt(found);
}

void Properties::Clear() {
  if (body_ != nullptr) body_->ReleaseAll();
}

void Properties::Swap(Properties& other) noexcept {
  std::swap(body_, other.body_);
  std::swap(caseless_, other.caseless_);
}

}  // namespace Tessera
