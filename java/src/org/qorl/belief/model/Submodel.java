package org.qorl.belief.model;

import java.util.List;

/**
 * A group of nodes and of further submodels.
 *
 * @param handle names it within its network
 * @param name for people; of the root submodel it is the name of the network; may be null
 * @param centerX where its box is drawn in the parent's diagram, in pixels
 * @param centerY the same, downwards
 * @param children handles of the submodels directly below
 */
public record Submodel(int handle, String name, int centerX, int centerY, List<Integer> children) {

    // Makes a private copy of the list.
    public Submodel {
        children = List.copyOf(children);
    }
}
