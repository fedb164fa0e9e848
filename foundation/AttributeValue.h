// One value of a DICOM attribute: a record with a count of typed elements, and the free helpers that
// allocate, copy, release and compare such records. A record's data is a heap block of bytes (array new) that
// the record's holder owns, or lies inside or beside the attribute that holds the record and is never
// released on its own. Plain data: one thread at a time, or the caller's lock.
#pragma once

#include "platform/Export.h"

/// The type of a value's elements. The underlying type is fixed so that any 32-bit number read from elsewhere
/// is a valid value of the enumeration; numbers outside 0 to 7 have element size 0.
enum tagEKivAGAttributeType : int
{
    eAttrNone = 0,   ///< no data
    eAttrChar = 1,   ///< 8-bit character or byte; compared as unsigned bytes
    eAttrShort = 2,  ///< signed 16-bit integer
    eAttrUShort = 3, ///< unsigned 16-bit integer
    eAttrInt = 4,    ///< signed 32-bit integer
    eAttrUInt = 5,   ///< unsigned 32-bit integer
    eAttrFloat = 6,  ///< IEEE 754 single
    eAttrDouble = 7  ///< IEEE 754 double
};

/// One value: `nCount` elements of type `eType` at `pData`, in the machine's byte order.
struct SKivAGAttributeValue
{
    int nCount;                   ///< number of elements; character data made from DICOM text counts its NUL
    tagEKivAGAttributeType eType; ///< the type of every element
    int nInSequenceIndex; ///< position of the sequence item that the value came from; negative: no item
    char* pData;          ///< nCount x element size bytes; null when there is no data
};

/// Size in bytes of one element: 0, 1, 2, 2, 4, 4, 4, 8 for the types 0 to 7, and 0 for any other number.
KIVDS_API int GetElementSize(tagEKivAGAttributeType type) noexcept;

/// A new array of `n` records, every field zero; the caller releases it with array delete (which does not
/// release the records' data). Null when `n` is negative, when the array's bytes do not fit in 32 bits or
/// cannot be had; reported as "Failed to allocate new attibute value" under "GetNewAttributeValueArray".
KIVDS_API SKivAGAttributeValue* GetNewAttributeValueArray(int n) noexcept;

/// Fills `*dst` with a copy of `*src` in a new heap block: all elements when `elementIndex` is negative, else
/// the one at `elementIndex`, which must be below `src->nCount`. What `dst->pData` pointed to is not
/// released. The caller releases the block with FreeAttributeValue or
/// CKivDSDicomAttribute::DeleteAttributeValue. False, reported under "CopyAttributeValue": "Invalid input
/// parameters" (a null pointer), "Empty source value " (element size 0; `*dst` then has no data and count 0),
/// "Failed to allocate destination buffer".
KIVDS_API bool CopyAttributeValue(const SKivAGAttributeValue* src, SKivAGAttributeValue* dst,
                                  int elementIndex) noexcept;

/// Releases the record's heap block and sets `pData` to null. Always true.
KIVDS_API bool FreeAttributeValue(SKivAGAttributeValue& value) noexcept;

/// Equality: same type, same count, same bytes (so +0.0 and -0.0 differ and a NaN equals its own bit
/// pattern). The in-sequence index takes no part.
KIVDS_API bool operator==(const SKivAGAttributeValue& a, const SKivAGAttributeValue& b) noexcept;
/// The negation of ==.
KIVDS_API bool operator!=(const SKivAGAttributeValue& a, const SKivAGAttributeValue& b) noexcept;

/// Ordering: element by element, a proper prefix first. Characters compare as unsigned bytes; a NaN orders
/// before whatever it meets. Values of different types: reported as "Attempt to quantitatively compare
/// attribute values of different type" (code 1) under "operator <"; false.
KIVDS_API bool operator<(const SKivAGAttributeValue& a, const SKivAGAttributeValue& b) noexcept;

/// Three-way comparison of `n` elements: 0 when all are equal (or n < 1), else +1 when the first pair that is
/// not equal has a[i] > b[i], -1 otherwise, also when one of the pair is a NaN.
template <class T>
int CompareElements(const T* a, const T* b, int n) noexcept
{
    for (int i = 0; i < n; ++i) {
        if (!(a[i] == b[i]))
            return a[i] > b[i] ? 1 : -1;
    }
    return 0;
}
