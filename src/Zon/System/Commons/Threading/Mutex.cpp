#include "Zon/System/Commons/Threading/Mutex.hpp"

#include <cerrno>
#include <cstring>
#include <string>

#include "Zon/Exception.hpp"

namespace Zon::System::Commons::Threading {

namespace {

void Check(int result, const char* operation)
{
    if (result != 0) {
        throw Exception("Mutex {0} failed: {1}", operation, std::string(std::strerror(result)));
    }
}

} // namespace

Mutex::Mutex()
{
    pthread_mutexattr_t attributes;
    Check(pthread_mutexattr_init(&attributes), "set-up");
    int result = pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_ERRORCHECK);
    if (result == 0) {
        result = pthread_mutex_init(&mutex, &attributes);
    }
    pthread_mutexattr_destroy(&attributes);
    Check(result, "set-up");
}

Mutex::~Mutex()
{
    pthread_mutex_destroy(&mutex);
}

void Mutex::Lock()
{
    Check(pthread_mutex_lock(&mutex), "lock");
}

bool Mutex::TryLock()
{
    int result = pthread_mutex_trylock(&mutex);
    if (result == EBUSY) {
        return false;
    }
    Check(result, "lock");
    return true;
}

void Mutex::Unlock()
{
    // The mutex is of the error-checking kind: the system refuses to unlock it for a thread that
    // does not hold it, and leaves it as it was.
    Check(pthread_mutex_unlock(&mutex), "unlock");
}

} // namespace Zon::System::Commons::Threading
