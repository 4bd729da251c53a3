package zorsuite;

/** How a worker stands, or how its latest run ended, in the order of the C interface. */
public enum ZorWorkerState {
  /** Has not run yet, or was not part of the latest start. */
  IDLE,
  /** Runs, or has been asked to end and has not ended yet. */
  RUNNING,
  /** Ended by itself. */
  FINISHED,
  /** Its run's time-out passed. */
  TIMED_OUT,
  /** The application stopped it. */
  STOPPED,
  /** A start of its kind took its place. */
  REPLACED,
  /** The system gave it no socket. */
  NO_SOCKET,
  /** The system gave it no thread or no memory. */
  NO_THREAD
}
