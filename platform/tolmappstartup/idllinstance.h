#pragma once

/// \file

#include "zanplatform_export.h"

#include <QtGlobal>

/// An object that a component library creates: the base of every component's own interface, which callers get
/// by `dynamic_cast`.
///
/// A component library is a shared object in the component directory. It exports two functions with C names:
/// \code
/// quint32 ZanComponentInterfaceVersion();   // IDllInstance::INTERFACE_VERSION it was built against
/// IDllInstance* ZanCreateComponent();       // a new instance; null or an exception refuses
/// \endcode
/// `ZAN_DEFINE_COMPONENT(MyComponent)` in one of its sources defines both.
///
/// Each time a library is loaded, its initialisers (the constructors of its static objects) run twice: first
/// as a test in a child process, which ends when they are done, then in the program. They must not leave
/// anything behind in files, must end within 5 s, and must not throw; what can fail belongs into the
/// constructor of the instance.
///
/// Destroying the last instance unloads the library, and with it the library's code and constants: a string
/// literal (`u"..."_s`, `QStringLiteral`) that it left in the value tree would dangle. What outlives the
/// instance must be a copy on the heap. Instances are created and destroyed on the application's main thread.
class ZANPLATFORM_EXPORT IDllInstance {
public:
    /// Changes with every change of this interface or of the platform that breaks components that are already
    /// built.
    static constexpr quint32 INTERFACE_VERSION = 1;

    IDllInstance() = default;
    IDllInstance(const IDllInstance&) = delete;
    IDllInstance& operator=(const IDllInstance&) = delete;
    /// Called by `CfgCenter::DestroyDllInstanceByPointer` only.
    virtual ~IDllInstance();
};

// NOLINTBEGIN(bugprone-macro-parentheses): the name of a class cannot stand in parentheses
/// Makes a shared object a component library whose instances are of one class, which derives from
/// `IDllInstance` and has a default constructor.
#define ZAN_DEFINE_COMPONENT(ComponentClass)                                                                 \
    extern "C" Q_DECL_EXPORT quint32 ZanComponentInterfaceVersion() {                                        \
        return IDllInstance::INTERFACE_VERSION;                                                              \
    }                                                                                                        \
    extern "C" Q_DECL_EXPORT IDllInstance* ZanCreateComponent() {                                            \
        return new ComponentClass;                                                                           \
    }
// NOLINTEND(bugprone-macro-parentheses)
