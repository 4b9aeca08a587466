# Makes the syntax files of editors and the completion of shells, from what the program says of its
# words and options:
#
#   cmake -D PROGRAM=… -D PACK=… -D SOURCE=editors -D TARGET=… -P cmake/editors.cmake
cmake_minimum_required(VERSION 3.25)
execute_process(COMMAND ${PROGRAM} --pack ${PACK} --words OUTPUT_VARIABLE words
  COMMAND_ERROR_IS_FATAL ANY)
foreach(kind keyword function constant variable command)
  string(REGEX MATCHALL "${kind} [^\n]+" lines "${words}")
  list(TRANSFORM lines REPLACE "^${kind} " "")
  string(REPLACE ";" " " ${kind} "${lines}")
  string(REPLACE ";" "|" ${kind}_pattern "${lines}")
  list(TRANSFORM lines REPLACE "(.+)" "      <item>\\1</item>")
  string(REPLACE ";" "\n" ${kind}_items "${lines}")
endforeach()
set(command_pattern_plain "${command_pattern}")

execute_process(COMMAND ${PROGRAM} --help OUTPUT_VARIABLE help COMMAND_ERROR_IS_FATAL ANY)
# "  -h,--help   What it does": each name, and for zsh what it does as well.
string(REGEX REPLACE "[][;]" "" help "${help}")
string(REGEX MATCHALL "\n  -[^\n]+(\n    +[^\n]+)?" lines "${help}")
foreach(line IN LISTS lines)
  string(REGEX MATCH "  +[A-Z][^\n]*$" summary "${line}")
  string(STRIP "${summary}" summary)
  string(REGEX MATCHALL "--?[a-z][-a-z]*" names "${line}")
  string(REGEX MATCH "^\n  [-a-z,]+" start "${line}")
  string(REGEX MATCHALL "--?[a-z][-a-z]*" names "${start}")
  foreach(name IN LISTS names)
    string(APPEND options " ${name}")
    string(REGEX REPLACE "[':]" "" words_of_summary "${summary}")
    string(APPEND zsh_options "  '${name}:${words_of_summary}'\n")
  endforeach()
endforeach()
string(STRIP "${options}" options)
string(REGEX REPLACE "\n$" "" zsh_options "${zsh_options}")

configure_file(${SOURCE}/worksheet.xml.in ${TARGET}/worksheet.xml @ONLY)
configure_file(${SOURCE}/worksheet.tmLanguage.json.in ${TARGET}/worksheet.tmLanguage.json @ONLY)
configure_file(${SOURCE}/worksheet.bash.in ${TARGET}/worksheet.bash @ONLY)
configure_file(${SOURCE}/worksheet.zsh.in ${TARGET}/_worksheet @ONLY)
# Vim has its own sign for "or".
string(REPLACE "|" "\\|" command_pattern "${command_pattern}")
configure_file(${SOURCE}/worksheet.vim.in ${TARGET}/worksheet.vim @ONLY)
