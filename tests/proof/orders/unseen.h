// What the thread sanitizer must not see.
#pragma once

#ifdef R47_THREAD_SANITIZER
extern "C" {
void AnnotateIgnoreReadsBegin(char const* file, int line);
void AnnotateIgnoreReadsEnd(char const* file, int line);
void AnnotateIgnoreWritesBegin(char const* file, int line);
void AnnotateIgnoreWritesEnd(char const* file, int line);
void AnnotateIgnoreSyncBegin(char const* file, int line);
void AnnotateIgnoreSyncEnd(char const* file, int line);
}
#endif

namespace orders {

// While one lives, what its thread does orders nothing for the sanitizer and is no access for it. The turns of the
// threads, which one after the other has, would otherwise hide every race.
class Unseen {
public:
#ifdef R47_THREAD_SANITIZER
    Unseen() {
        AnnotateIgnoreReadsBegin(__FILE__, __LINE__);
        AnnotateIgnoreWritesBegin(__FILE__, __LINE__);
        AnnotateIgnoreSyncBegin(__FILE__, __LINE__);
    }
    ~Unseen() {
        AnnotateIgnoreSyncEnd(__FILE__, __LINE__);
        AnnotateIgnoreWritesEnd(__FILE__, __LINE__);
        AnnotateIgnoreReadsEnd(__FILE__, __LINE__);
    }
#else
    Unseen() {}
    ~Unseen() {}
#endif
    Unseen(Unseen const&) = delete;
    Unseen& operator=(Unseen const&) = delete;
};

}  // namespace orders
