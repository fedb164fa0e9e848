// Whether an object is of a class itself, not of one derived from it, which may have replaced operations.
#pragma once

#include <typeinfo>

namespace kivds {

/// Compares where the classes' descriptions lie, since comparing their names is as much work as the operation
/// that is asked for. Were there two descriptions of a class, an object of the other would be taken for one
/// of a derived class, and its operations called through the virtual table.
template <class Class, class Object>
bool IsExactly(const Object& object) noexcept
{
    return &typeid(object) == &typeid(Class);
}

} // namespace kivds
