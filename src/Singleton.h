#pragma once

/// @file
/// One shared, reference-counted instance of a class. Beside the converter rather than in include/:
/// the two are known by their place, and clients find both among the other headers all the same.

#include "Korvex2Export.h"

namespace boost {
class mutex;  // the whole of it only where a singleton is made: SingletonDefinitions.h
}

namespace Korvex2 {

/// Base of classes of which the SDK shares one instance.
///
/// getInstance makes the instance for its first user and counts every further one;
/// releaseInstance deletes it when the last user lets go. Both may be called from any thread. T
/// needs a public default constructor and destructor; further instances made directly are allowed
/// and have nothing to do with the shared one.
///
/// Using a singleton takes this header alone. Making one of your own takes
/// SingletonDefinitions.h, which includes Boost.Thread. A shared library that hands out its
/// singleton must instantiate the template once and declare it extern in T's header, or each
/// library would count users of its own.
template <typename T>
class KORVEX2_API Singleton {
 public:
  /// The shared instance; null when there is no memory for it (and no user is counted).
  static T* getInstance();

  /// One getInstance undone. Without a user left to release, nothing happens.
  static void releaseInstance();

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

}  // namespace Korvex2
