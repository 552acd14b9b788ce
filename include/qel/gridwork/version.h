/// @file
/// The version, for the preprocessor. version() tells that of the library that runs, which may be a later one of the same
/// major number.
///
/// Code that is to work with several versions asks for the one from which on something is there:
/// @code
/// #if QEL_GRIDWORK_VERSION >= QEL_GRIDWORK_VERSION_NUMBER(4, 8, 0)
/// @endcode
#ifndef QEL_GRIDWORK_VERSION_H
#define QEL_GRIDWORK_VERSION_H

#define QEL_GRIDWORK_VERSION_MAJOR 4  ///< changes with the ABI and the soname
#define QEL_GRIDWORK_VERSION_MINOR 8  ///< counts additions
#define QEL_GRIDWORK_VERSION_PATCH 0  ///< counts corrections

/// The same, as a string: "4.8.0".
#define QEL_GRIDWORK_VERSION_STRING \
  QEL_GRIDWORK_DOTTED(QEL_GRIDWORK_VERSION_MAJOR, QEL_GRIDWORK_VERSION_MINOR, QEL_GRIDWORK_VERSION_PATCH)

/// A version as one number, which increases from version to version; minor and patch are below 1000.
#define QEL_GRIDWORK_VERSION_NUMBER(major, minor, patch) ((major)*1000000 + (minor)*1000 + (patch))

/// The version of these headers as one number.
#define QEL_GRIDWORK_VERSION \
  QEL_GRIDWORK_VERSION_NUMBER(QEL_GRIDWORK_VERSION_MAJOR, QEL_GRIDWORK_VERSION_MINOR, QEL_GRIDWORK_VERSION_PATCH)

/// @cond internal
#define QEL_GRIDWORK_DOTTED(major, minor, patch) \
  QEL_GRIDWORK_QUOTED(major) "." QEL_GRIDWORK_QUOTED(minor) "." QEL_GRIDWORK_QUOTED(patch)
#define QEL_GRIDWORK_QUOTED(text) #text
/// @endcond

#endif
