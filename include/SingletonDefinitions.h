#pragma once

/// @file
/// What stands behind Singleton.h, for whoever makes a singleton of their own. Needs Boost.Thread's
/// headers, which no other header of the library does.

#include <boost/thread/lock_guard.hpp>
#include <boost/thread/mutex.hpp>
#include <new>

#include "Singleton.h"

namespace Korvex2 {

template <typename T>
T* Singleton<T>::m_pInstance = nullptr;

template <typename T>
int Singleton<T>::m_iRefCount = 0;

template <typename T>
boost::mutex Singleton<T>::m_mutex;

template <typename T>
T* Singleton<T>::getInstance() {
  const boost::lock_guard<boost::mutex> lock(m_mutex);
  if (m_pInstance == nullptr) {
    m_pInstance = new (std::nothrow) T;
  }
  if (m_pInstance != nullptr) {
    ++m_iRefCount;
  }
  return m_pInstance;
}

template <typename T>
void Singleton<T>::releaseInstance() {
  const boost::lock_guard<boost::mutex> lock(m_mutex);
  if (m_iRefCount == 0) {
    return;
  }
  if (--m_iRefCount == 0) {
    delete m_pInstance;
    m_pInstance = nullptr;
  }
}

}  // namespace Korvex2
