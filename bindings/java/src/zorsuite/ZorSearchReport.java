package zorsuite;

/** What the latest search has done. */
public final class ZorSearchReport {
  static final int NUMBERS = 3 + ZorLineReport.NUMBERS + 1 + ZorSystemError.NUMBERS;

  /** How it stands, or how it ended. */
  public final ZorWorkerState state;

  /** Requests handed to the system. */
  public final long requestsSent;

  /** Requests that the system refused, or without a socket. */
  public final long requestsFailed;

  /** What came in. */
  public final ZorLineReport received;

  /** 1 while nothing failed. */
  public final long socketsOpened;

  /** The latest failure of a socket. */
  public final ZorSystemError error;

  ZorSearchReport(Numbers numbers) {
    state = numbers.takeState();
    requestsSent = numbers.take();
    requestsFailed = numbers.take();
    received = new ZorLineReport(numbers);
    socketsOpened = numbers.take();
    error = new ZorSystemError(numbers);
  }
}
