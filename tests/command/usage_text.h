// The usage text, whole, as users know it.
#pragma once

#include <string>

namespace commandtest {

inline std::string usageText(const std::string& program) {
    return "\nArchive creation and maintenance tool\n\nCommand format:\n\n" + program +
           " options archive [ file_list ]\n\n"
           "Wildcards '?' and '*' may be used in file_list\n\n"
           "Options:-\n\n"
           " -r         Insert files in <file_list>, replace existing members of the same name.\n"
           " -d         Delete the members in <file_list>.\n"
           " -x         Extract members in <file_list> placing in files of the same name.\n"
           " -m         Move files in <file_list>.\n"
           " -p         Print files to stdout.\n"
           " -a pos     Insert/move files after file named <pos>.\n"
           " -b pos     Insert/move files before file named <pos>.\n"
           " -u         Update older files only, used with -r.\n\n"
           " -n         Do not add a symbol table to an object archive.\n"
           " -s         Force regeneration of archive symbol table.\n"
           " -t         Print table of contents of archive.\n"
           "--zs        Show the symbol table.\n"
           "--zt        Summarize the archive contents (sizes + entries).\n"
           " -c         Suppress warning when a new archive is created.\n"
           " -C         Do not overwrite existing files when extracting.\n"
           " -T         Truncate file names to system maximum length.\n"
           " -v         Give verbose output.\n"
           "--create    Force creation of a new archive.\n"
           "--via file  Take additional arguments from via file.\n"
           "--sizes     List the size of each member and the library total.\n"
           "--entries   List sections containing ENTRY points.\n"
           "--vsn       Print the current Tomex Version. \n"
           "--help      Print this message. \n\n"
           "Examples:-\n\n        " +
           program + " -r  mylib.a obj1 obj2 obj3...\n        " + program +
           " -x  mylib.a ?sort*\n        " + program + " -d  mylib.a hash.o\n        " + program +
           " -tv ansilib.a\n\n";
}

} // namespace commandtest
