# CUEBRIDGE_SANITIZE=address,undefined builds everything with those sanitizers.
set(CUEBRIDGE_SANITIZE "" CACHE STRING "Comma-separated -fsanitize= list (empty: none)")
if(CUEBRIDGE_SANITIZE)
  add_compile_options(-fsanitize=${CUEBRIDGE_SANITIZE} -fno-omit-frame-pointer
                      -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${CUEBRIDGE_SANITIZE})
endif()
