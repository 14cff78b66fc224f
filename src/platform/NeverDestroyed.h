#pragma once

namespace norvane {

/// An object of the process that is made when the library is loaded, or before that if its
/// constructor is constexpr, and never destroyed: threads and the destructors of static objects may
/// use it to the very end. A static of a function would do so too, but while one thread makes it
/// another may fork, and the child would wait for that thread for ever.
template <class T>
union NeverDestroyed {
    constexpr NeverDestroyed() : object() {}
    NeverDestroyed(const NeverDestroyed&) = delete;
    NeverDestroyed& operator=(const NeverDestroyed&) = delete;
    ~NeverDestroyed() {} // NOLINT(modernize-use-equals-default): that one would be deleted

    T object;
};

} // namespace norvane
