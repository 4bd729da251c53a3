package zorsuite;

/** What the latest upgrade has done. */
public final class ZorUpgradeReport {
  static final int NUMBERS = 9 + ZorSystemError.NUMBERS;

  /** How it stands, or how it ended. */
  public final ZorWorkerState state;

  /** Requests handed to the system. */
  public final long requestsSent;

  /** Requests that the system refused, or without a socket. */
  public final long requestsFailed;

  /** Received, of any content and from anywhere. */
  public final long datagrams;

  /** Accepted. */
  public final long answers;

  /** Refused: from another address. */
  public final long otherAddress;

  /** Refused: from another port of the module. */
  public final long otherPort;

  /** Refused: no response line, or empty. */
  public final long notAResponse;

  /** 1 while its socket lived. */
  public final long socketsOpened;

  /** The latest failure of a socket. */
  public final ZorSystemError error;

  ZorUpgradeReport(Numbers numbers) {
    state = numbers.takeState();
    requestsSent = numbers.take();
    requestsFailed = numbers.take();
    datagrams = numbers.take();
    answers = numbers.take();
    otherAddress = numbers.take();
    otherPort = numbers.take();
    notAResponse = numbers.take();
    socketsOpened = numbers.take();
    error = new ZorSystemError(numbers);
  }
}
