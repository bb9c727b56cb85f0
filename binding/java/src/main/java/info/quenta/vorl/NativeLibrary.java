package info.quenta.vorl;

import java.io.IOException;
import java.io.InputStream;
import java.io.UncheckedIOException;
import java.nio.charset.StandardCharsets;
import java.nio.file.AtomicMoveNotSupportedException;
import java.nio.file.Files;
import java.nio.file.LinkOption;
import java.nio.file.Path;
import java.nio.file.StandardCopyOption;
import java.nio.file.attribute.PosixFilePermissions;
import java.security.MessageDigest;
import java.security.NoSuchAlgorithmException;
import java.util.HexFormat;

/**
 * Loads the native library, once for each class loader.
 *
 * <p>The property {@code vorl.library.path} names the file to load. Without it the library is
 * sought in {@code java.library.path}; where it isn't found, the copy that the jar carries is
 * unpacked into a folder of the user that is named after its hash, and loaded from there. JVMs that
 * start at the same time each write a file of their own and move it into place.
 */
public final class NativeLibrary {
    private static final String NAME = "vorl_java";
    private static final String RESOURCE = "native/lib" + NAME + ".so";

    private static boolean loaded;

    private NativeLibrary() {}

    /**
     * Loads the library unless it is loaded.
     *
     * @throws UnsatisfiedLinkError if there is none that can be loaded
     */
    public static synchronized void load() {
        if (loaded)
            return;
        String path = System.getProperty("vorl.library.path");
        if (path != null) {
            System.load(Path.of(path).toAbsolutePath().toString());
        } else {
            try {
                System.loadLibrary(NAME);
            } catch (UnsatisfiedLinkError notInstalled) {
                loadPacked(notInstalled);
            }
        }
        loaded = true;
    }

    private static void loadPacked(UnsatisfiedLinkError notInstalled) {
        try {
            Path cache = cacheFolder();
            if (cache != null) {
                System.load(unpack(cache).toString());
                return;
            }
            // A home that can't be written to, as in a container.
            Path folder = Files.createTempDirectory("vorl");
            Path file = unpack(folder);
            try {
                System.load(file.toString());
            } finally {
                // What is loaded stays.
                for (Path path = file; path.startsWith(folder); path = path.getParent())
                    Files.delete(path);
            }
        } catch (IOException | UncheckedIOException err) {
            UnsatisfiedLinkError failure =
                new UnsatisfiedLinkError("the native library of the jar can't be unpacked: " + err
                    + "; -Dvorl.library.path= names another one");
            failure.initCause(err);
            failure.addSuppressed(notInstalled);
            throw failure;
        }
    }

    /** The folder that keeps unpacked libraries, null if there can be none. */
    private static Path cacheFolder() {
        String cache = System.getenv("XDG_CACHE_HOME");
        String home = System.getProperty("user.home");
        Path root;
        if (cache != null && cache.startsWith("/"))
            root = Path.of(cache);
        else if (home != null && home.startsWith("/"))
            root = Path.of(home, ".cache");
        else
            return null;
        try {
            Path folder = Files.createDirectories(root.resolve("vorl"));
            return Files.isWritable(folder) ? folder : null;
        } catch (IOException err) {
            return null;
        }
    }

    /** Puts the packed library into a folder under the given one, unless it is there already. */
    static Path unpack(Path cache) throws IOException {
        byte[] library = resource(RESOURCE);
        String hash = new String(resource(RESOURCE + ".sha256"), StandardCharsets.US_ASCII).trim();
        Path folder = cache.resolve(hash);
        Path file = folder.resolve("lib" + NAME + ".so");
        if (holds(file, hash))
            return file;
        createPrivate(folder);
        Path unfinished = Files.createTempFile(folder, "lib", ".part");
        try {
            Files.write(unfinished, library);
            try {
                Files.move(unfinished, file, StandardCopyOption.ATOMIC_MOVE);
            } catch (AtomicMoveNotSupportedException err) {
                Files.move(unfinished, file, StandardCopyOption.REPLACE_EXISTING);
            }
        } finally {
            Files.deleteIfExists(unfinished);
        }
        return file;
    }

    private static void createPrivate(Path folder) throws IOException {
        if (!Files.isDirectory(folder, LinkOption.NOFOLLOW_LINKS))
            try {
                Files.createDirectory(folder,
                    PosixFilePermissions.asFileAttribute(
                        PosixFilePermissions.fromString("rwx------")));
            } catch (java.nio.file.FileAlreadyExistsException another) {
                // Another JVM was faster.
            }
    }

    private static boolean holds(Path file, String hash) throws IOException {
        return Files.isRegularFile(file, LinkOption.NOFOLLOW_LINKS)
            && hash.equals(sha256(Files.readAllBytes(file)));
    }

    private static String sha256(byte[] bytes) {
        try {
            return HexFormat.of().formatHex(MessageDigest.getInstance("SHA-256").digest(bytes));
        } catch (NoSuchAlgorithmException err) {
            throw new IllegalStateException(err);
        }
    }

    private static byte[] resource(String name) throws IOException {
        try (InputStream in = NativeLibrary.class.getResourceAsStream(name)) {
            if (in == null)
                throw new IOException("the jar holds no " + name);
            return in.readAllBytes();
        }
    }
}
