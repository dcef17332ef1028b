# How everything here is compiled: warnings, sanitizers, and the C++ standards of the driver and of the rest.

add_library(tanek_vs_warnings INTERFACE)
target_compile_options(tanek_vs_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wnon-virtual-dtor -Wold-style-cast
  -Wcast-align -Wcast-qual -Woverloaded-virtual -Wformat=2 -Wundef
  $<$<BOOL:${TANEK_VS_WERROR}>:-Werror>)

if(TANEK_VS_SANITIZE)
  add_compile_options(-fsanitize=${TANEK_VS_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${TANEK_VS_SANITIZE})
endif()

if(TANEK_VS_FUZZERS)
  add_compile_options(-fsanitize=fuzzer-no-link)
  add_link_options(-fsanitize=fuzzer-no-link)
endif()

# The driver keeps to C++11, the language of the compilers on boards with the oldest Qt; Qt 6 headers need C++17.
if(TANEK_VS_QT EQUAL 6)
  set(TANEK_VS_DRIVER_STANDARD 17)
else()
  set(TANEK_VS_DRIVER_STANDARD 11)
endif()
set(CMAKE_CXX_STANDARD 17) # tools, tests and benchmarks
