import info.quenta.vorl.api.Clustering;
import info.quenta.vorl.api.Membership;
import info.quenta.vorl.api.Network;
import java.nio.file.Path;

/** Prints the communities of a node, and how much of the node belongs to each of them. */
public class Communities {
    public static void main(String[] args) {
        if (args.length != 2) {
            System.err.println("usage: java Communities NETWORK NODE");
            System.exit(2);
        }
        Path file = Path.of(args[0]);
        long node = Long.parseLong(args[1]);

        try (Network network = Network.read(file); Clustering clustering = network.cluster()) {
            System.out.printf("%d nodes, %d levels, %d clusters at the root, modularity %.4f%n",
                network.nodeCount(), clustering.levels().size(), clustering.root().size(),
                clustering.score().modularity());
            for (Membership m : clustering.root().memberships(node))
                System.out.printf("%.2f of node %d in cluster %d with %d nodes%n", m.share(), node,
                    m.cluster().id(), m.cluster().size());
        }
    }
}
