# Shared libraries for other languages: each holds the library, its C interface and, where that is not the
# system's own, the C++ standard library, and exports only what its own map lists.
include(CheckCXXSymbolExists)
include(CheckLinkerFlag)

check_cxx_symbol_exists(__GLIBCXX__ version ZOR_LIBSTDCXX)
check_linker_flag(CXX "LINKER:-z,nodelete" ZOR_LINKER_TAKES_NODELETE)

# `symbols` is the pattern of the map once more, for Apple's linker.
function(zor_make_self_contained target map symbols)
  target_sources(${target} PRIVATE $<TARGET_OBJECTS:ZorSuite> $<TARGET_OBJECTS:zor_c>)
  target_link_libraries(${target} PRIVATE Threads::Threads $<$<PLATFORM_ID:Android>:log>
    $<$<NOT:$<BOOL:${ZOR_COMPILER_HAS_64_BIT_ATOMICS}>>:atomic>)
  set_target_properties(${target} PROPERTIES LINKER_LANGUAGE CXX)
  if(APPLE)
    # Other linkers than Apple's leave it at the visibility of each symbol.
    check_linker_flag(CXX "LINKER:-exported_symbol,${symbols}" ZOR_LINKER_TAKES_EXPORTED_SYMBOL)
    if(ZOR_LINKER_TAKES_EXPORTED_SYMBOL)
      target_link_options(${target} PRIVATE "LINKER:-exported_symbol,${symbols}")
    endif()
  else()
    target_link_options(${target} PRIVATE "LINKER:--version-script=${map}")
    set_target_properties(${target} PROPERTIES LINK_DEPENDS ${map})
  endif()
  # Sanitizers bring a standard library with them.
  if(ZOR_LIBSTDCXX AND NOT APPLE AND NOT ZOR_SANITIZE)
    target_link_options(${target} PRIVATE -static-libstdc++)
  endif()
  # A worker still runs a few instructions after its end has been announced.
  if(ZOR_LINKER_TAKES_NODELETE)
    target_link_options(${target} PRIVATE "LINKER:-z,nodelete")
  endif()
endfunction()
