#ifndef QEL_GRIDWORK_WEB_EXPORTS_H
#define QEL_GRIDWORK_WEB_EXPORTS_H

/// A function that the module shows to JavaScript, under this name.
#define QEL_GRIDWORK_WEB_EXPORT(name) extern "C" __attribute__((export_name(name)))

#endif
