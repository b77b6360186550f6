import { describe, it } from "vitest";
import { useScene } from "./support/scene";

const scene = useScene({ configuration: '{"streams": {' });

describe("a server whose configuration is broken", () => {
    it("says so, and where", async () => {
        const watched = await scene.open("streams");
        await watched.page.getByText(/Safe mode.*line 1/).waitFor();
        await watched.page.getByText("There is no stream yet").waitFor();
        await watched.keep("safe_mode");
    });
});
