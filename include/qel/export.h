/// @file
/// The mark of exported declarations.
#ifndef QEL_EXPORT_H
#define QEL_EXPORT_H

/// Marks what the shared library exports. Defined as nothing for the static library (QEL_GRIDWORK_STATIC).
#if defined(QEL_GRIDWORK_STATIC)
#define QEL_GRIDWORK_API
#elif defined(_WIN32)
#if defined(QEL_GRIDWORK_BUILDING)
#define QEL_GRIDWORK_API __declspec(dllexport)
#else
#define QEL_GRIDWORK_API __declspec(dllimport)
#endif
#else
#define QEL_GRIDWORK_API __attribute__((visibility("default")))
#endif

#endif
