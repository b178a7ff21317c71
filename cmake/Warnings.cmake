# Strict warnings for every target of the project; -Werror when asked (CI does).
function(cuebridge_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow
                                           -Wnon-virtual-dtor -Wcast-align -Wformat=2)
  if(CUEBRIDGE_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()
