#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "caja/base/CajaError.h"
#include "caja/base/Objeto.h"

namespace caja {

// The host language's Collection: objects in insertion order, each with an
// optional text key compared without regard to letter case. A duplicate key
// raises 457, a missing key or index raises 5. Indexes are 1-based.
template <class T>
class Collection : public Objeto {
  struct Entrada {
    std::string clave;  // folded to lower case; empty when the item has no key
    std::shared_ptr<T> item;
  };
  using Entradas = std::vector<Entrada>;

  static std::string plegar(const std::string& key) {
    std::string clave = key;
    for (char& c : clave)
      if (c >= 'A' && c <= 'Z')
        c = static_cast<char>(c - 'A' + 'a');
    return clave;
  }

 public:
  using Elemento = std::shared_ptr<T>;

  void Add(Elemento item, const std::string& key = {}) {
    if (!key.empty() && buscar(key) != entradas_.end())
      throw errorEjecucion(err::kClaveDuplicada);
    entradas_.push_back({plegar(key), std::move(item)});
  }

  const Elemento& Item(long indice) const {
    if (indice < 1 || indice > Count())
      throw errorEjecucion(err::kLlamadaInvalida);
    return entradas_[static_cast<std::size_t>(indice - 1)].item;
  }
  const Elemento& Item(const std::string& key) const {
    auto it = buscar(key);
    if (it == entradas_.end())
      throw errorEjecucion(err::kLlamadaInvalida);
    return it->item;
  }
  // The lookup a caller would guard with an error handler: nullptr when absent.
  Elemento Find(const std::string& key) const {
    auto it = buscar(key);
    return it == entradas_.end() ? nullptr : it->item;
  }

  void Remove(long indice) {
    Item(indice);
    entradas_.erase(entradas_.begin() + (indice - 1));
  }
  void Remove(const std::string& key) {
    auto it = buscar(key);
    if (it == entradas_.end())
      throw errorEjecucion(err::kLlamadaInvalida);
    entradas_.erase(it);
  }

  long Count() const { return static_cast<long>(entradas_.size()); }

  class const_iterator {
   public:
    explicit const_iterator(typename Entradas::const_iterator it) : it_(it) {}
    const Elemento& operator*() const { return it_->item; }
    const_iterator& operator++() {
      ++it_;
      return *this;
    }
    bool operator==(const const_iterator& o) const { return it_ == o.it_; }

   private:
    typename Entradas::const_iterator it_;
  };
  const_iterator begin() const { return const_iterator(entradas_.begin()); }
  const_iterator end() const { return const_iterator(entradas_.end()); }

 private:
  typename Entradas::const_iterator buscar(const std::string& key) const {
    if (key.empty())
      return entradas_.end();
    const std::string clave = plegar(key);
    for (auto it = entradas_.begin(); it != entradas_.end(); ++it)
      if (it->clave == clave)
        return it;
    return entradas_.end();
  }

  Entradas entradas_;
};

}  // namespace caja
