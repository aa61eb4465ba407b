#include "SingletonDefinitions.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <type_traits>
#include <vector>

#include "ImageConverterARMStub.h"

namespace Korvex2::Test {
namespace {

class Counted : public Singleton<Counted> {
 public:
  Counted() { ++alive; }
  ~Counted() override { --alive; }

  static int Users() { return m_iRefCount; }
  static bool Exists() { return m_pInstance != nullptr; }
  static std::atomic<int> alive;
};
std::atomic<int> Counted::alive{0};

static_assert(std::has_virtual_destructor_v<ImageConverter>);
static_assert(!std::is_copy_constructible_v<Singleton<Counted>> &&
              !std::is_copy_assignable_v<Singleton<Counted>> &&
              !std::is_default_constructible_v<Singleton<Counted>>);
static_assert(std::is_base_of_v<Singleton<ImageConverter>, ImageConverter>);

TEST(Singleton, IsMadeForTheFirstUserAndDeletedAfterTheLast) {
  EXPECT_EQ(Counted::alive, 0);
  Counted* const first = Counted::getInstance();
  Counted* const second = Counted::getInstance();
  EXPECT_NE(first, nullptr);
  EXPECT_EQ(first, second);
  EXPECT_EQ(Counted::alive, 1);
  EXPECT_EQ(Counted::Users(), 2);
  Counted::releaseInstance();
  EXPECT_EQ(Counted::alive, 1);
  Counted::releaseInstance();
  EXPECT_EQ(Counted::alive, 0);
  EXPECT_FALSE(Counted::Exists());
  EXPECT_EQ(Counted::Users(), 0);
}

TEST(Singleton, SurvivesOneReleaseTooMany) {
  Counted::releaseInstance();
  EXPECT_EQ(Counted::Users(), 0);
  EXPECT_NE(Counted::getInstance(), nullptr);
  EXPECT_EQ(Counted::Users(), 1);
  Counted::releaseInstance();
  EXPECT_EQ(Counted::alive, 0);
}

TEST(Singleton, HasNothingToDoWithInstancesMadeDirectly) {
  const Counted own;
  EXPECT_FALSE(Counted::Exists());
  EXPECT_EQ(Counted::Users(), 0);
}

TEST(Singleton, IsSharedByManyThreads) {
  std::vector<std::thread> threads;
  std::atomic<int> wrong{0};
  for (int t = 0; t < 8; ++t) {
    threads.emplace_back([&wrong] {
      for (int i = 0; i < 5000; ++i) {
        const Counted* const mine = Counted::getInstance();
        if (mine == nullptr || Counted::alive != 1) ++wrong;
        Counted::releaseInstance();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, 0);
  EXPECT_EQ(Counted::alive, 0);
  EXPECT_EQ(Counted::Users(), 0);
}

TEST(Singleton, OfTheConverterConverts) {
  ImageConverter* const converter = ImageConverter::getInstance();
  ASSERT_NE(converter, nullptr);
  EXPECT_EQ(converter, Singleton<ImageConverter>::getInstance());
  Image source;
  Image destination;
  ASSERT_EQ(source.SetDimensions(2, 2, 2, PIXEL_FORMAT_MONO8, NONE).GetType(), VORERROR_OK);
  EXPECT_EQ(converter->Convert(&source, PIXEL_FORMAT_BGRU, &destination).GetType(), VORERROR_OK);
  ImageConverter::releaseInstance();
  ImageConverter::releaseInstance();
}

}  // namespace
}  // namespace Korvex2::Test
