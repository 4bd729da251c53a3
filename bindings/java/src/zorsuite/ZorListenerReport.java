package zorsuite;

/** What the listener for announcements has done. */
public final class ZorListenerReport {
  static final int NUMBERS = 2 + ZorLineReport.NUMBERS + 1 + ZorSystemError.NUMBERS;

  /** How it stands, or how it ended. */
  public final ZorWorkerState state;

  /** UDP port that it was bound to, 0 while there was none. */
  public final int port;

  /** What came in. */
  public final ZorLineReport received;

  /** 1 while its socket lived. */
  public final long socketsOpened;

  /** The latest failure to receive or to open a socket. */
  public final ZorSystemError error;

  ZorListenerReport(Numbers numbers) {
    state = numbers.takeState();
    port = numbers.takeInt();
    received = new ZorLineReport(numbers);
    socketsOpened = numbers.take();
    error = new ZorSystemError(numbers);
  }
}
