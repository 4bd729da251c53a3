package zorsuite;

/**
 * Does to a new socket what only the application can.
 *
 * <p>On Android, where an application cannot bind to an interface, it binds to the Wi-Fi network:
 *
 * <pre>{@code
 * ZorSuite.setSocketHook(descriptor -> {
 *   try (ParcelFileDescriptor copy = ParcelFileDescriptor.fromFd(descriptor)) {
 *     wifiNetwork.bindSocket(copy.getFileDescriptor());
 *     return true;
 *   } catch (IOException refused) {
 *     return false;
 *   }
 * });
 * }</pre>
 *
 * <p>{@code fromFd} duplicates the descriptor, so that closing the copy leaves the library's socket open, and
 * both are one socket to the system. {@code adoptFd} must not be used: it would close the library's.
 */
public interface ZorSocketHook {
  /**
   * Returns false to refuse the socket; so does what it throws. The call that needs the socket waits for it.
   * It is called on the thread that opens the socket, the application's or a worker's, several at a time. It
   * must not close the descriptor, keep it, or start a worker.
   */
  boolean onSocket(int descriptor);
}
