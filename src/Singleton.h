#pragma once

/// @file
/// One shared, reference-counted instance of a class.

#include <boost/thread/lock_guard.hpp>
#include <boost/thread/mutex.hpp>
#include <new>

#include "Korvex2Export.h"

namespace Korvex2 {

/// Base of classes of which the SDK shares one instance.
///
/// getInstance makes the instance for its first user and counts every further one;
/// releaseInstance deletes it when the last user lets go. Both may be called from any thread. T
/// needs a public default constructor and destructor; further instances made directly are allowed
/// and have nothing to do with the shared one.
///
/// A shared library that hands out its singleton must instantiate the template once and declare it
/// extern in T's header, or each library would count users of its own.
template <typename T>
class KORVEX2_API Singleton {
 public:
  /// The shared instance; null when there is no memory for it (and no user is counted).
  static T* getInstance() {
    const boost::lock_guard<boost::mutex> lock(m_mutex);
    if (m_pInstance == nullptr) {
      m_pInstance = new (std::nothrow) T;
    }
    if (m_pInstance != nullptr) {
      ++m_iRefCount;
    }
    return m_pInstance;
  }

  /// One getInstance undone. Without a user left to release, nothing happens.
  static void releaseInstance() {
    const boost::lock_guard<boost::mutex> lock(m_mutex);
    if (m_iRefCount == 0) {
      return;
    }
    if (--m_iRefCount == 0) {
      delete m_pInstance;
      m_pInstance = nullptr;
    }
  }

 protected:
  Singleton() {}           ///< by T alone
  virtual ~Singleton() {}  ///< through releaseInstance

  /// Declared so that no copy is made from outside, and never defined.
  Singleton(const Singleton&);
  /// As the copy constructor.
  Singleton& operator=(const Singleton&);

  static T* m_pInstance;        ///< the shared instance; null while it has no user
  static int m_iRefCount;       ///< its users
  static boost::mutex m_mutex;  ///< held while either changes
};

template <typename T>
T* Singleton<T>::m_pInstance = nullptr;

template <typename T>
int Singleton<T>::m_iRefCount = 0;

template <typename T>
boost::mutex Singleton<T>::m_mutex;

}  // namespace Korvex2
