#include "app/CInstanceSemaphore.h"

#include <sys/ipc.h>
#include <sys/sem.h>
#include <sys/types.h>

CInstanceSemaphore::CInstanceSemaphore(const char* path, int projectId)
{
    const key_t key = ftok(path, projectId);
    if (key == -1)
        return;

    m_semaphoreId = semget(key, 1, 0);
    if (m_semaphoreId == -1) {
        m_semaphoreId = semget(key, 1, IPC_CREAT | IPC_EXCL | 0666);
        if (m_semaphoreId == -1)
            return;
    } else {
        // The semaphore exists; it is free only while its value is zero.
        sembuf waitForZero{0, 0, IPC_NOWAIT};
        if (semop(m_semaphoreId, &waitForZero, 1) == -1)
            return;
    }

    semctl(m_semaphoreId, 0, SETVAL, 0);
    sembuf acquire{0, 1, SEM_UNDO};
    m_locked = semop(m_semaphoreId, &acquire, 1) == 0;
}

CInstanceSemaphore::~CInstanceSemaphore()
{
    Release();
}

void CInstanceSemaphore::Release()
{
    if (m_locked)
        semctl(m_semaphoreId, 0, IPC_RMID);
    m_locked = false;
}
