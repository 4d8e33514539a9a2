/* The protocol of the job scheduler, for the model checker spin.
 *
 * Two clients with a job each, three workers, a service behind the first job's server; for the second job a
 * handler that is cancelled at any moment, and a client that closes the job while its tasks run and makes
 * another one in its place. The names are those of src/oztsprocessor.cpp; so are the steps, as far as they
 * touch the lock, the sets of workers and the counts of tasks. What tasks do is left to chance.
 *
 * Checked in every interleaving:
 * - nobody waits for ever (spin reports an invalid end state);
 * - every accepted task ends in exactly one list, and is run at most once;
 * - a job never runs more tasks than it may;
 * - the service is never entered twice at once;
 * - Wait returns only when nothing of its job runs, and its workers have left;
 * - no worker stays claimed for ever, and none is started while it runs.
 *
 * How much of this happens is chosen when the checker is built, so that a search can be small:
 *
 *   FIRST_TASKS, SECOND_TASKS   how many tasks the clients add; 2 and 2 if not given
 *   REQUESTS    tasks of the first job may send a request
 *   CANCEL      the second job may be cancelled
 *   REPLACE     the second job may be closed and replaced before it is waited for
 *   DEPEND      a task of the second job that a worker has come to from the first one waits for the first
 *               client to get on, as a task may
 *
 * Each WINDOW_n opens a fault that the scheduler closes; run_model.sh sees to it that spin finds it.
 *
 *   WINDOW_1  Wait does not count a run of the server as work under way
 *   WINDOW_2  Wait starts no workers itself
 *   WINDOW_3  Wait joins a worker's thread though the worker has moved to another job
 *   WINDOW_4  a worker is freed after a join though somebody has started it again since
 *   WINDOW_5  a job is created with the global lock held
 *   WINDOW_6  a worker that reports to a closed job keeps its task
 */

#ifndef FIRST_TASKS
#define FIRST_TASKS 2
#endif
#ifndef SECOND_TASKS
#define SECOND_TASKS 2
#endif

#define JOBS 2
#define WORKERS 3
#define SERVER_LIMIT 1

#define LIMIT(j) (2 + j)   /* of what runs at once */

/* What a worker has. */
#define NOTHING 0
#define TASK 1
#define RUN_TASK 2         /* a task that has run */
#define SERVER 3

/* A step that takes the scheduler's lock, does all its work and gives the lock back is one atomic step. The
 * locks are variables only where somebody waits for one lock while holding the other. */
#ifdef WINDOW_5
bit scheduler_lock = 0;
bit global_lock = 0;
#define UNLOCKED(which) (which == 0)
#else
#define UNLOCKED(which) true
#endif

/* Guarded by the scheduler's lock. */
byte last_serial = 0;
byte serial[JOBS];         /* 0: the place is free */
byte pending[JOBS];
byte running[JOBS];
bit server_running = 0;    /* only the first job has a server */
bit free_worker[WORKERS];
bit ended_worker[WORKERS];
byte leaving[WORKERS];     /* the serial that the worker served last, until it is joined */
byte worker_serial[WORKERS];

/* A worker's own, or handed over with its thread. */
bit worker_job[WORKERS];
byte worker_task[WORKERS];
bit thread[WORKERS];       /* its thread runs */
#ifdef DEPEND
bit moved[WORKERS];        /* its present run has served the first job, and then the second */
bit first_wait_over = 0;
#endif

byte requests = 0;         /* in the server's queue, which has a lock of its own */
bit in_service = 0;
bit cancelled = 0;         /* the second job's handler */
bit sleeping[JOBS];        /* a client in the condition variable */
byte clients_done = 0;

/* Tasks that were accepted and have not ended in a list, nor been deleted by the worker that ran them. */
byte open_tasks = 0;

inline wake_waiters() { sleeping[0] = 0; sleeping[1] = 0 }

#define IDLE(w) (free_worker[w] || ended_worker[w])
#define SOME_IDLE (IDLE(0) || IDLE(1) || IDLE(2))
#define MAY_RUN_MORE(j) (serial[j] != 0 && running[j] < LIMIT(j))
#define HAS_TASKS_TO_RUN(j) (MAY_RUN_MORE(j) && pending[j] != 0)
#define SERVER_IS_DUE \
  (serial[0] != 0 && !server_running && requests != 0 && (requests > SERVER_LIMIT || pending[0] == 0))
#define IS_CANCELLED(j) (j == 1 && cancelled)

inline serve_requests() {
  do
  :: atomic { requests != 0 -> requests--; assert(!in_service); in_service = 1 }
     in_service = 0
  :: else -> break
  od
}

inline count_run(j) {
  running[j]++;
  assert(running[j] <= LIMIT(j))
}

inline cancel_pending(j) {
  open_tasks = open_tasks - pending[j];
  pending[j] = 0
}

/* Inside an atomic step; the lock is let go while the thread starts. */
inline start_worker(j, w) {
  if
  :: IDLE(2) -> w = 2
  :: else -> if
    :: IDLE(1) -> w = 1
    :: else -> w = 0
    fi
  fi;
  free_worker[w] = 0;
  ended_worker[w] = 0;
  pending[j]--;
  count_run(j);
  worker_serial[w] = serial[j];
  thread[w] == 0;                               /* Join */
  UNLOCKED(scheduler_lock);
  leaving[w] = 0;
  wake_waiters();
  assert(thread[w] == 0 && worker_task[w] == NOTHING);
  worker_job[w] = j;
  worker_task[w] = TASK;
  thread[w] = 1                                 /* Start */
}

inline next_task(w) {
  if
  :: worker_job[w] == 0 && SERVER_IS_DUE ->
     worker_task[w] = SERVER;
     server_running = 1
  :: else -> if
    :: HAS_TASKS_TO_RUN(0) ->
       worker_task[w] = TASK;
       pending[0]--;
       if
       :: worker_job[w] != 0 -> worker_job[w] = 0; wake_waiters()
       :: else -> skip
       fi
    :: else -> if
      :: HAS_TASKS_TO_RUN(1) ->
         worker_task[w] = TASK;
         pending[1]--;
         if
         :: worker_job[w] != 1 ->
            worker_job[w] = 1;
#ifdef DEPEND
            moved[w] = 1;
#endif
            wake_waiters()
         :: else -> skip
         fi
      :: else -> worker_task[w] = NOTHING
      fi
    fi
  fi
}

inline end_run(w) {
  leaving[w] = worker_serial[w];
  worker_serial[w] = 0;
  worker_job[w] = 0;
#ifdef DEPEND
  moved[w] = 0;
#endif
  ended_worker[w] = 1;
  wake_waiters()
}

#define IS_STALE(w) (serial[worker_job[w]] != worker_serial[w])

/* Inside an atomic step. */
inline task_finished(w) {
  UNLOCKED(scheduler_lock);
  if
#ifdef WINDOW_6
  :: serial[worker_job[w]] == 0 -> skip
#else
  :: IS_STALE(w) ->
     if
     :: worker_task[w] == RUN_TASK -> open_tasks--
     :: else -> skip
     fi;
     worker_task[w] = NOTHING;
     end_run(w)
#endif
  :: else ->
     if
     :: worker_task[w] == SERVER -> server_running = 0
     :: else ->
        open_tasks--;
#ifdef WINDOW_5
        scheduler_lock = 1;
        UNLOCKED(global_lock);                  /* the progress handler draws an identity */
        scheduler_lock = 0
#endif
     fi;
#ifndef WINDOW_1                                /* it goes wrong before the service is entered twice */
     assert(running[worker_job[w]] != 0);
#endif
     running[worker_job[w]]--;
     if
     :: IS_CANCELLED(worker_job[w]) -> cancel_pending(worker_job[w]); worker_task[w] = NOTHING
     :: else -> next_task(w)
     fi;
     if
     :: worker_task[w] == NOTHING -> end_run(w)
     :: else -> count_run(worker_job[w]); worker_serial[w] = serial[worker_job[w]]
     fi
  fi
}

active [WORKERS] proctype Worker() {
end:
  do
  :: thread[_pid] ->
     do
     :: atomic { worker_task[_pid] == TASK ->
          if
#ifdef REQUESTS
          :: worker_job[_pid] == 0 -> requests++
#endif
          :: skip
          fi;
#ifdef DEPEND
          if
          :: moved[_pid] -> first_wait_over
          :: else -> skip
          fi;
#endif
          worker_task[_pid] = RUN_TASK }
     :: atomic { worker_task[_pid] == RUN_TASK ->
          task_finished(_pid);
          assert(worker_task[_pid] != RUN_TASK) /* it would be run again */ }
     :: worker_task[_pid] == SERVER -> serve_requests(); atomic { task_finished(_pid) }
     :: atomic { worker_task[_pid] == NOTHING ->
          UNLOCKED(global_lock);                /* ReleaseProcessorLocals, RemoveProcessor */
          thread[_pid] = 0;
          break }
     od
  od
}

inline create_job(j) {
#ifdef WINDOW_5
  atomic { UNLOCKED(global_lock) -> global_lock = 1 }
  atomic { UNLOCKED(scheduler_lock) -> last_serial++; serial[j] = last_serial; global_lock = 0 }
#else
  atomic { last_serial++; serial[j] = last_serial }
#endif
}

inline add_task(j, w) {
  atomic { UNLOCKED(scheduler_lock) ->
    if
    :: IS_CANCELLED(j) -> skip                  /* refused */
    :: else ->
       open_tasks++;
       pending[j]++;
       if
       :: MAY_RUN_MORE(j) && SOME_IDLE -> start_worker(j, w)
       :: else -> skip
       fi
    fi
  }
}

#ifdef WINDOW_1
#define WORK_UNDER_WAY(j) (pending[j] != 0 || running[j] > (j == 0 && server_running))
#else
#define WORK_UNDER_WAY(j) (pending[j] != 0 || running[j] != 0)
#endif

#ifdef WINDOW_2
#define MAY_START(j) false
#else
#define MAY_START(j) (HAS_TASKS_TO_RUN(j) && SOME_IDLE)
#endif

/* Each turn is a step under the lock, up to where the lock is let go. */
inline run_to_end(j, w) {
  do
  :: atomic { UNLOCKED(scheduler_lock) ->
       if
       :: IS_CANCELLED(j) -> cancel_pending(j)
       :: else -> skip
       fi;
       if
       :: !WORK_UNDER_WAY(j) -> break
       :: WORK_UNDER_WAY(j) && MAY_START(j) -> start_worker(j, w)
       :: WORK_UNDER_WAY(j) && !MAY_START(j) -> sleeping[j] = 1; !sleeping[j]
       fi
     }
  od
}

inline find_leaving(j, w) {
  if
  :: leaving[0] == serial[j] -> w = 0
  :: else -> if
    :: leaving[1] == serial[j] -> w = 1
    :: else -> if
      :: leaving[2] == serial[j] -> w = 2
      :: else -> w = WORKERS
      fi
    fi
  fi
}

inline join_leaving(j, w) {
  do
  :: atomic { UNLOCKED(scheduler_lock) ->
       find_leaving(j, w);
       if
       :: w == WORKERS -> break
#ifdef WINDOW_4
       :: else ->
#else
       :: w != WORKERS && !ended_worker[w] -> sleeping[j] = 1; !sleeping[j]  /* somebody else joins it */
       :: w != WORKERS && ended_worker[w] ->
          ended_worker[w] = 0;
#endif
          thread[w] == 0;                       /* Join */
          UNLOCKED(scheduler_lock);
          leaving[w] = 0;
          free_worker[w] = 1;
          wake_waiters()
       fi
     }
  od
}

#define IS_AT_WORK(w, j) (worker_task[w] != NOTHING && worker_serial[w] == serial[j])

inline wait_job(j, w) {
  run_to_end(j, w);
#ifdef WINDOW_3
  if
  :: j == 0 -> !moved[0] || !thread[0]; !moved[1] || !thread[1]; !moved[2] || !thread[2]
  :: else -> skip
  fi;
#endif
  join_leaving(j, w);
  if
  :: j == 0 -> serve_requests()
  :: else -> skip
  fi;
  atomic { UNLOCKED(scheduler_lock) ->
#ifndef WINDOW_1                                /* as this would */
    assert(!IS_AT_WORK(0, j) && !IS_AT_WORK(1, j) && !IS_AT_WORK(2, j));
    assert(leaving[0] != serial[j] && leaving[1] != serial[j] && leaving[2] != serial[j]);
#endif
    running[j] = 0
  }
}

inline remove_job(j) {
  atomic { UNLOCKED(scheduler_lock) -> running[j] = 0; serial[j] = 0 }
}

proctype FirstClient() {
  byte w = 0;
  byte i = 0;
  create_job(0);
  do
  :: i < FIRST_TASKS -> add_task(0, w); i++
  :: else -> break
  od;
  wait_job(0, w);
#ifdef DEPEND
  first_wait_over = 1;
#endif
  remove_job(0);
  clients_done++
}

proctype SecondClient() {
  byte w = 0;
  byte i = 0;
  create_job(1);
  do
  :: i < SECOND_TASKS -> add_task(1, w); i++
  :: else -> break
  od;
#ifdef REPLACE
  if
  :: remove_job(1); create_job(1)
  :: skip
  fi;
#endif
  wait_job(1, w);
  remove_job(1);
  clients_done++
}

#ifdef CANCEL
proctype Canceller() {
  if
  :: cancelled = 1
  :: skip
  fi
}
#endif

init {
  atomic {
    free_worker[0] = 1; free_worker[1] = 1; free_worker[2] = 1;
    run FirstClient(); run SecondClient();
#ifdef CANCEL
    run Canceller()
#endif
  }
  clients_done == 2 && !thread[0] && !thread[1] && !thread[2];
  assert(IDLE(0) && IDLE(1) && IDLE(2));
  assert(pending[0] == 0 && pending[1] == 0 && requests == 0);
  assert(open_tasks == 0)
}
