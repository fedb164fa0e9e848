# Checks that the README shows examples/first_steps.cpp verbatim. ROOT: the tree's root.
file(READ "${ROOT}/README.md" readme)
file(READ "${ROOT}/examples/first_steps.cpp" program)
string(FIND "${readme}" "```cpp\n${program}```" place)
if(place EQUAL -1)
    message(FATAL_ERROR "README.md does not show examples/first_steps.cpp as it is")
endif()
