# Checks the #include lines of a source tree against the table of allowed
# folder dependencies in the design notes.
#
#   cmake -DRULES=docs/design.md -DTREE=src -P cmake/CheckFolderDependencies.cmake
#
# The table is the one whose header row is "| folder | may include |"; each
# row names a folder of the tree and, in backticks, the folders it may
# include ("nothing of ours" for none). An include whose first path step is
# a folder of the table counts; any other (system headers, a file beside the
# includer) does not. The check fails when a folder of the tree has no row,
# when the rows allow a cycle, or when a file includes a folder its row does
# not name, and lists every such include.

cmake_minimum_required(VERSION 3.25)

if(NOT RULES OR NOT TREE)
  message(FATAL_ERROR "usage: cmake -DRULES=<design notes> -DTREE=<src> -P CheckFolderDependencies.cmake")
endif()
get_filename_component(TREE "${TREE}" ABSOLUTE)

# ---- the rules ----
file(READ "${RULES}" notes)
string(REGEX MATCH "\n\\| *folder *\\| *may include *\\|[^\n]*\n(\\|[^\n]*\n)+" table "${notes}")
string(REGEX MATCHALL "[^\n]+" rows "${table}")
set(folders)
foreach(row IN LISTS rows)
  if(row MATCHES "^\\| *folder *\\|" OR row MATCHES "^\\|[- |]*$")
    continue()
  endif()
  if(NOT row MATCHES "^\\| *`([a-z]+)` *\\|(.*)\\| *$")
    message(FATAL_ERROR "${RULES}: a row of the folder table cannot be read: ${row}")
  endif()
  set(folder "${CMAKE_MATCH_1}")
  string(REGEX MATCHALL "`[a-z]+`" allowed "${CMAKE_MATCH_2}")
  string(REPLACE "`" "" allowed "${allowed}")
  list(APPEND folders "${folder}")
  set("allowed_${folder}" "${allowed}")
endforeach()
if(NOT folders)
  message(FATAL_ERROR "${RULES}: no table \"| folder | may include |\" found")
endif()

set(problems)

# Every named folder has a row of its own.
foreach(folder IN LISTS folders)
  foreach(target IN LISTS "allowed_${folder}")
    if(NOT target IN_LIST folders)
      list(APPEND problems "the row of ${folder} names ${target}, which has no row")
    endif()
  endforeach()
endforeach()

# The rows allow no cycle: repeatedly remove the folders that may include
# nothing that is left.
set(left ${folders})
set(progress TRUE)
while(left AND progress)
  set(progress FALSE)
  foreach(folder IN LISTS left)
    set(blocked FALSE)
    foreach(target IN LISTS "allowed_${folder}")
      if(target IN_LIST left AND NOT target STREQUAL folder)
        set(blocked TRUE)
      endif()
    endforeach()
    if(NOT blocked)
      list(REMOVE_ITEM left "${folder}")
      set(progress TRUE)
    endif()
  endforeach()
endwhile()
if(left)
  string(REPLACE ";" ", " cycle "${left}")
  list(APPEND problems "the rows allow a cycle among ${cycle}")
endif()

# ---- the tree ----
file(GLOB present LIST_DIRECTORIES TRUE RELATIVE "${TREE}" "${TREE}/*")
foreach(folder IN LISTS present)
  if(IS_DIRECTORY "${TREE}/${folder}" AND NOT folder IN_LIST folders)
    list(APPEND problems "src/${folder} has no row in the folder table of ${RULES}")
  endif()
endforeach()

foreach(folder IN LISTS folders)
  file(GLOB_RECURSE sources "${TREE}/${folder}/*.h" "${TREE}/${folder}/*.cpp")
  foreach(source IN LISTS sources)
    file(STRINGS "${source}" includes REGEX "^[ \t]*#[ \t]*include[ \t]*\"")
    file(RELATIVE_PATH shown "${TREE}" "${source}")
    foreach(include IN LISTS includes)
      if(NOT include MATCHES "\"([^\"]+)\"")
        continue()
      endif()
      set(path "${CMAKE_MATCH_1}")
      if(path MATCHES "\\.\\./")
        list(APPEND problems "src/${shown} includes \"${path}\": name the folder instead of climbing to it")
        continue()
      endif()
      if(NOT path MATCHES "^([a-z]+)/")
        continue()
      endif()
      set(target "${CMAKE_MATCH_1}")
      if(NOT target IN_LIST folders OR target STREQUAL folder)
        continue()
      endif()
      if(NOT target IN_LIST "allowed_${folder}")
        list(APPEND problems "src/${shown} includes \"${path}\", but ${folder} may not include ${target}")
      endif()
    endforeach()
  endforeach()
endforeach()

if(problems)
  list(LENGTH problems count)
  string(REPLACE ";" "\n  " listed "${problems}")
  message(FATAL_ERROR "${count} folder dependency problem(s):\n  ${listed}")
endif()
list(LENGTH folders count)
message(STATUS "The includes of ${count} folders follow the folder table.")
