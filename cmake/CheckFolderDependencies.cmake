# Checks the #include lines of a source tree against the table of allowed
# folder dependencies in the design notes.
#
#   cmake -DRULES=docs/design.md -DTREE=src -P cmake/CheckFolderDependencies.cmake
#
# The table is the one whose header row is "| folder | may include |"; each
# row names a folder of the tree and, in backticks, the folders it may
# include ("nothing of ours" for none). A row may also name a sub-folder
# (`host/documents`): its files then follow that row and not their parent's,
# and an include of it counts as an include of the sub-folder. Naming a
# folder allows its sub-folders with rows of their own as well. A file
# belongs to the longest row its path starts with; an include counts when
# its path starts with a row's folder, and any other (system headers, a file
# beside the includer) does not. The check fails when a folder of the tree
# has no row, when the rows allow a cycle, or when a file includes a folder
# its row does not name, and lists every such include.

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
  if(NOT row MATCHES "^\\| *`([a-z]+(/[a-z]+)*)` *\\|(.*)\\| *$")
    message(FATAL_ERROR "${RULES}: a row of the folder table cannot be read: ${row}")
  endif()
  set(folder "${CMAKE_MATCH_1}")
  string(REGEX MATCHALL "`[a-z/]+`" allowed "${CMAKE_MATCH_3}")
  string(REPLACE "`" "" allowed "${allowed}")
  list(APPEND folders "${folder}")
  set("allowed_${folder}" "${allowed}")
endforeach()
if(NOT folders)
  message(FATAL_ERROR "${RULES}: no table \"| folder | may include |\" found")
endif()

# The row a path belongs to: the longest folder of the table that the path
# starts with, or nothing.
function(owning_row path result)
  set(best "")
  foreach(folder IN LISTS folders)
    string(LENGTH "${folder}" length)
    string(LENGTH "${best}" bestLength)
    string(FIND "${path}" "${folder}/" at)
    if(at EQUAL 0 AND length GREATER bestLength)
      set(best "${folder}")
    endif()
  endforeach()
  set(${result} "${best}" PARENT_SCOPE)
endfunction()

set(problems)

# Every named folder has a row of its own, and naming a folder names its
# sub-folders with rows too.
foreach(folder IN LISTS folders)
  set(expanded)
  foreach(target IN LISTS "allowed_${folder}")
    if(NOT target IN_LIST folders)
      list(APPEND problems "the row of ${folder} names ${target}, which has no row")
    endif()
    list(APPEND expanded "${target}")
    foreach(sub IN LISTS folders)
      string(FIND "${sub}" "${target}/" at)
      if(at EQUAL 0 AND NOT sub STREQUAL folder)
        list(APPEND expanded "${sub}")
      endif()
    endforeach()
  endforeach()
  list(REMOVE_DUPLICATES expanded)
  set("allowed_${folder}" "${expanded}")
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

file(GLOB_RECURSE sources "${TREE}/*.h" "${TREE}/*.cpp")
foreach(source IN LISTS sources)
  file(RELATIVE_PATH shown "${TREE}" "${source}")
  owning_row("${shown}" folder)
  if(NOT folder)
    continue()
  endif()
  file(STRINGS "${source}" includes REGEX "^[ \t]*#[ \t]*include[ \t]*\"")
  foreach(include IN LISTS includes)
    if(NOT include MATCHES "\"([^\"]+)\"")
      continue()
    endif()
    set(path "${CMAKE_MATCH_1}")
    if(path MATCHES "\\.\\./")
      list(APPEND problems "src/${shown} includes \"${path}\": name the folder instead of climbing to it")
      continue()
    endif()
    owning_row("${path}" target)
    if(NOT target OR target STREQUAL folder)
      continue()
    endif()
    if(NOT target IN_LIST "allowed_${folder}")
      list(APPEND problems "src/${shown} includes \"${path}\", but ${folder} may not include ${target}")
    endif()
  endforeach()
endforeach()

if(problems)
  list(LENGTH problems count)
  string(REPLACE ";" "\n  " listed "${problems}")
  message(FATAL_ERROR "${count} folder dependency problem(s):\n  ${listed}")
endif()
list(LENGTH folders count)
message(STATUS "The includes of ${count} folders follow the folder table.")
