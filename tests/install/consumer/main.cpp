// An application of the installed library: creates a dictionary, adds a language
// pair and reads it back through the public headers only.
#include <qvb/qvb.h>
#include <cstdio>
int main(int argc, char** argv) {
    CDbDictionary db;
    if (argc < 2 || !db.CreateDb(argv[1], "consumer") || !db.OpenDb(argv[1], "consumer", 0)) {
        std::printf("failed %d\n", db.GetError());
        return 1;
    }
    DWORD id = 0;
    db.AddSLang(&id, 1031, 1033, CString("Arial"), 0);
    CDWordArray ids;
    db.EnumSLang(ids);
    std::printf("%s %d pairs, version %s\n", (const char*)db.GetFileName(), (int)ids.GetSize(), QvbLibraryVersion());
    return db.CloseDb() ? 0 : 1;
}
