// The export macros of the library and of the three platform modules beside it.
// A module is built with its own KIV_BUILD_... macro defined; its users define nothing.
// With KIV_STATIC everything is linked into one image and the macros are empty.
#pragma once

#if defined(KIV_STATIC)
/// Marks what the module that is being built exports.
#define KIV_EXPORT
/// Marks what another module exports.
#define KIV_IMPORT
#elif defined(_WIN32)
#define KIV_EXPORT __declspec(dllexport)
#define KIV_IMPORT __declspec(dllimport)
#else
#define KIV_EXPORT __attribute__((visibility("default")))
#define KIV_IMPORT __attribute__((visibility("default")))
#endif

#if defined(KIV_BUILD_BASEERROR) // KivIPBaseErrorU: the error sink
/// Marks what KivIPBaseErrorU exports.
#define KIV_BASEERROR_API KIV_EXPORT
#else
#define KIV_BASEERROR_API KIV_IMPORT
#endif

#if defined(KIV_BUILD_BASESCOPE) // KivIPPBaseScopeU: scopes
/// Marks what KivIPPBaseScopeU exports.
#define KIV_BASESCOPE_API KIV_EXPORT
#else
#define KIV_BASESCOPE_API KIV_IMPORT
#endif

#if defined(KIV_BUILD_SCOPEITEM) // KivIPPDicomScopeItemU: scope items, frame ranges and their factory
/// Marks what KivIPPDicomScopeItemU exports.
#define KIV_SCOPEITEM_API KIV_EXPORT
#else
#define KIV_SCOPEITEM_API KIV_IMPORT
#endif

#if defined(KIV_BUILD_DATA) // KivDSDataU: the library itself
/// Marks what KivDSDataU exports.
#define KIVDS_API KIV_EXPORT
#else
#define KIVDS_API KIV_IMPORT
#endif
