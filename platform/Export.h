// The export macros of the library and of the three platform modules beside it.
// A module is built with its own KIV_BUILD_... macro defined; its users define nothing.
// With KIV_STATIC everything is linked into one image and the macros are empty.
#pragma once

#if defined(KIV_STATIC)
#define KIV_EXPORT
#define KIV_IMPORT
#elif defined(_WIN32)
#define KIV_EXPORT __declspec(dllexport)
#define KIV_IMPORT __declspec(dllimport)
#else
#define KIV_EXPORT __attribute__((visibility("default")))
#define KIV_IMPORT __attribute__((visibility("default")))
#endif

#if defined(KIV_BUILD_BASEERROR) // KivIPBaseErrorU: the error sink
#define KIV_BASEERROR_API KIV_EXPORT
#else
#define KIV_BASEERROR_API KIV_IMPORT
#endif

#if defined(KIV_BUILD_BASESCOPE) // KivIPPBaseScopeU: scopes
#define KIV_BASESCOPE_API KIV_EXPORT
#else
#define KIV_BASESCOPE_API KIV_IMPORT
#endif

#if defined(KIV_BUILD_SCOPEITEM) // KivIPPDicomScopeItemU: scope items, frame ranges and their factory
#define KIV_SCOPEITEM_API KIV_EXPORT
#else
#define KIV_SCOPEITEM_API KIV_IMPORT
#endif

#if defined(KIV_BUILD_DATA) // KivDSDataU: the library itself
#define KIVDS_API KIV_EXPORT
#else
#define KIVDS_API KIV_IMPORT
#endif

#if defined(KIV_BUILD_DICOM) // KivDSDicom: the adapter for DICOM files
#define KIVDS_DICOM_API KIV_EXPORT
#else
#define KIVDS_DICOM_API KIV_IMPORT
#endif
