// Lists with the interface of java.util.List. They count by int as Java does; positions and counts
// are checked here.

%{
#include <stdexcept>
#include <vector>

namespace vorl::java {

// A new element of a list of the given length: nothing is linked to yet.
template <class T>
T blank() {
    if constexpr (std::is_constructible_v<T, std::nullptr_t>)
        return T(nullptr);
    else
        return T(0);
}

inline std::size_t checkedCount(jint count) {
    if (count < 0) throw std::out_of_range("vector count must be positive");
    return static_cast<std::size_t>(count);
}

inline jint checkedSize(std::size_t size) {
    if (size > 0x7FFFFFFF)
        throw std::out_of_range("vector size is too large to fit into a Java int");
    return static_cast<jint>(size);
}

// The position, which must lie below the limit.
inline std::ptrdiff_t checkedIndex(jint index, std::size_t limit) {
    if (index < 0 || static_cast<std::size_t>(index) >= limit)
        throw std::out_of_range("vector index out of range");
    return index;
}

}  // namespace vorl::java
%}

%javamethodmodifiers std::vector::doSize "private";
%javamethodmodifiers std::vector::doAdd "private";
%javamethodmodifiers std::vector::doGet "private";
%javamethodmodifiers std::vector::doSet "private";
%javamethodmodifiers std::vector::doRemove "private";
%javamethodmodifiers std::vector::doRemoveRange "private";

namespace std {

template <class T>
class vector {
%typemap(javabase) std::vector<T> "java.util.AbstractList<$typemap(jboxtype, T)>"
%typemap(javainterfaces) std::vector<T> "java.util.RandomAccess"
%proxycode %{
  public $javaclassname(Iterable<$typemap(jboxtype, T)> elements) {
    this();
    for ($typemap(jstype, T) element : elements) add(element);
  }

  public $typemap(jboxtype, T) get(int index) {
    return doGet(index);
  }

  public $typemap(jboxtype, T) set(int index, $typemap(jboxtype, T) element) {
    return doSet(index, element);
  }

  public boolean add($typemap(jboxtype, T) element) {
    modCount++;
    doAdd(element);
    return true;
  }

  public void add(int index, $typemap(jboxtype, T) element) {
    modCount++;
    doAdd(index, element);
  }

  public $typemap(jboxtype, T) remove(int index) {
    modCount++;
    return doRemove(index);
  }

  protected void removeRange(int fromIndex, int toIndex) {
    modCount++;
    doRemoveRange(fromIndex, toIndex);
  }

  public int size() {
    return doSize();
  }
%}

public:
    typedef T value_type;

    vector();
    vector(const vector& other);

    vorl::Size capacity() const;
    void reserve(vorl::Size n) throw(std::length_error);
    %rename(isEmpty) empty;
    bool empty() const;
    void clear();

    %extend {
        vector(jint count) throw(std::out_of_range) {
            return new std::vector<T>(vorl::java::checkedCount(count), vorl::java::blank<T>());
        }
        vector(jint count, const T& value) throw(std::out_of_range) {
            return new std::vector<T>(vorl::java::checkedCount(count), value);
        }
        jint doSize() const throw(std::out_of_range) {
            return vorl::java::checkedSize(self->size());
        }
        void doAdd(const T& value) { self->push_back(value); }
        void doAdd(jint index, const T& value) throw(std::out_of_range) {
            self->insert(self->begin() + vorl::java::checkedIndex(index, self->size() + 1), value);
        }
        T doRemove(jint index) throw(std::out_of_range) {
            const auto place = self->begin() + vorl::java::checkedIndex(index, self->size());
            const T former = *place;
            self->erase(place);
            return former;
        }
        const T& doGet(jint index) const throw(std::out_of_range) {
            return *(self->begin() + vorl::java::checkedIndex(index, self->size()));
        }
        T doSet(jint index, const T& value) throw(std::out_of_range) {
            const auto place = self->begin() + vorl::java::checkedIndex(index, self->size());
            return std::exchange(*place, static_cast<T>(value));
        }
        void doRemoveRange(jint fromIndex, jint toIndex) throw(std::out_of_range) {
            using vorl::java::checkedIndex;
            const auto last = checkedIndex(toIndex, self->size() + 1);
            const auto first = checkedIndex(fromIndex, static_cast<std::size_t>(last) + 1);
            self->erase(self->begin() + first, self->begin() + last);
        }
    }
};

}  // namespace std

%template(Ids) std::vector<vorl::Id>;
%template(Arcs) std::vector<vorl::Link<vorl::LinkWeight, true>>;
%template(SArcs) std::vector<vorl::Link<vorl::LinkWeight, false>>;
%template(InpLinks) std::vector<vorl::InpLink<true>>;
%template(SInpLinks) std::vector<vorl::InpLink<false>>;
