# find_package(ruxa-dolq): the target ruxa::dolq. The platform's libraries are the loader's matter.
include(${CMAKE_CURRENT_LIST_DIR}/ruxa-dolq-targets.cmake)
