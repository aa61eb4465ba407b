# Programs of tests once more on each instruction set that the machine may have besides its best.
# Which bytes a kernel makes depends on the set, and which bytes it leaves to the plain loops. The
# variables named like the programs choose of their tests those that a set makes a difference to.

set(converter_tests *)
set(memory_tests From/OldMemory*:MemoryUse.*Stack)
set(sets plain)
if(CMAKE_SYSTEM_PROCESSOR STREQUAL "x86_64")
  list(APPEND sets SSE4 AVX2 AVX3)
endif()
foreach(program converter_tests memory_tests)
  foreach(set IN LISTS sets)
    add_test(NAME ${program}.${set} COMMAND ${program} --gtest_brief=1 --gtest_filter=${${program}})
    set_tests_properties(${program}.${set} PROPERTIES
      TIMEOUT 900 ENVIRONMENT "KORVEX2_CPU=${set}"
      SKIP_REGULAR_EXPRESSION "is no instruction set of this machine")
  endforeach()
endforeach()

if(NOT CMAKE_SYSTEM_PROCESSOR STREQUAL "aarch64")
  return()
endif()

# The emulator has every set, vectors as long as it is told; another machine may lack some.
set(lacking SKIP_REGULAR_EXPRESSION)
if(CMAKE_CROSSCOMPILING_EMULATOR)
  set(lacking FAIL_REGULAR_EXPRESSION)
endif()

function(korvex2_test_on_arm set bits processor)
  set(golden_tests On/*)
  # The methods that compute in floats take an emulator minutes; their digests are among the golden ones.
  set(bayer_tests */NearestNeighbor_${set}:*/EdgeSensing_${set}:*/HqLinear_${set})
  foreach(program converter_tests golden_tests memory_tests bayer_tests)
    set(name ${program}.${set}_at_${bits})
    add_test(NAME ${name} COMMAND ${program} --gtest_filter=${${program}})
    set_tests_properties(${name} PROPERTIES
      TIMEOUT 3600 ENVIRONMENT "KORVEX2_CPU=${set};QEMU_CPU=${processor}"
      ${lacking} "is no instruction set of this machine|Running 0 tests")
  endforeach()
endfunction()

# Generic scalable vectors at each length, and the sets that are made for one length.
foreach(bits 128 256 512)
  math(EXPR bytes "${bits} / 8")
  set(processor max,sve-default-vector-length=${bytes})
  korvex2_test_on_arm(SVE2 ${bits} ${processor})
  if(bits LESS 512)
    korvex2_test_on_arm(SVE ${bits} ${processor})
  endif()
endforeach()
korvex2_test_on_arm(SVE2_128 128 max,sve-default-vector-length=16)
korvex2_test_on_arm(SVE_256  256 max,sve-default-vector-length=32)
korvex2_test_on_arm(SVE      512 a64fx)  # has SVE alone
