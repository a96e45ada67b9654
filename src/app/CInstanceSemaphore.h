#pragma once

// The single-instance lock: a System V semaphore keyed on the program file. The kernel undoes
// our increment when the process dies (SEM_UNDO), so a crash never leaves a stale lock, and
// copies of the program at different paths don't exclude each other.
class CInstanceSemaphore {
public:
    CInstanceSemaphore(const char* path, int projectId);
    ~CInstanceSemaphore();

    CInstanceSemaphore(const CInstanceSemaphore&) = delete;
    CInstanceSemaphore& operator=(const CInstanceSemaphore&) = delete;

    bool IsLocked() const { return m_locked; }
    int SemaphoreId() const { return m_semaphoreId; }

    // Gives the lock up now; the destructor then has nothing left to do.
    void Release();

private:
    bool m_locked = false;
    int m_semaphoreId = -1;
};
