package zorsuite;

import java.nio.charset.StandardCharsets;

/**
 * A module that was heard. The texts come from the network: bounded and free of zeros, otherwise untrusted.
 * Each is there as the bytes that were sent and as a {@code String}, in which what is not UTF-8 is replaced.
 */
public final class ZorModule {
  private final byte[] id;
  private final byte[] ip;
  private final byte[] version;
  private final byte[] capabilities;
  private final byte[] extension;

  ZorModule(byte[] id, byte[] ip, byte[] version, byte[] capabilities, byte[] extension) {
    this.id = id;
    this.ip = ip;
    this.version = version;
    this.capabilities = capabilities;
    this.extension = extension;
  }

  /** The module's {@code mac}, at most 19 bytes. */
  public String getId() { return text(id); }

  /** The bytes of {@link #getId}. */
  public byte[] getIdBytes() { return id.clone(); }

  /** The dotted-quad address that the line came from. */
  public String getIp() { return text(ip); }

  /** The version of its firmware, at most 19 bytes. */
  public String getVersion() { return text(version); }

  /** The bytes of {@link #getVersion}. */
  public byte[] getVersionBytes() { return version.clone(); }

  /** Its text about its capabilities, at most 39 bytes. */
  public String getCapabilities() { return text(capabilities); }

  /** The bytes of {@link #getCapabilities}. */
  public byte[] getCapabilitiesBytes() { return capabilities.clone(); }

  /** The rest of the line, verbatim, at most 399 bytes. */
  public String getExtension() { return text(extension); }

  /** The bytes of {@link #getExtension}. */
  public byte[] getExtensionBytes() { return extension.clone(); }

  private static String text(byte[] bytes) { return new String(bytes, StandardCharsets.UTF_8); }
}
