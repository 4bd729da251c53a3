package zorsuite;

/** What one sender has done. */
public final class ZorSenderReport {
  static final int NUMBERS = 7 + ZorSystemError.NUMBERS;

  /** How it stands, or how it ended. */
  public final ZorWorkerState state;

  /** Datagrams sent. */
  public final long datagrams;

  /** Payload bytes of these. */
  public final long bytes;

  /** Datagrams that the system refused. */
  public final long failedSends;

  /** 1 while nothing failed. */
  public final long socketsOpened;

  /** Passes of the packet that were completed. */
  public final long cycles;

  /** Blocks of cycles that were completed. */
  public final long blocks;

  /** The latest failure to send or to open a socket. */
  public final ZorSystemError error;

  ZorSenderReport(Numbers numbers) {
    state = numbers.takeState();
    datagrams = numbers.take();
    bytes = numbers.take();
    failedSends = numbers.take();
    socketsOpened = numbers.take();
    cycles = numbers.take();
    blocks = numbers.take();
    error = new ZorSystemError(numbers);
  }
}
