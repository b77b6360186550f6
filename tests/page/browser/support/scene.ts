import type { Browser, BrowserContextOptions } from "playwright-core";
import { afterAll, afterEach, beforeAll, expect } from "vitest";
import { launch, patience, Watched } from "./browser";
import { gate, Server } from "./server";

interface Options {
    configuration?: unknown;
    args?: (folder: string) => string[];
    /** Done before the server starts, in the test's folder. */
    view?: BrowserContextOptions;
}

/** A server and a browser for the tests of a file; whatever a page should not do fails the test that did it. */
export interface Scene {
    server: Server;
    open: (view: string, options?: BrowserContextOptions) => Promise<Watched>;
}

export function useScene({ configuration = { streams: { gate } }, args }: Options = {}): Scene {
    let browser: Browser;
    const open: Watched[] = [];
    const scene: Scene = {
        server: undefined as unknown as Server,
        open: async (view, options) => {
            const watched = await Watched.open(browser, scene.server.address, options);
            open.push(watched);
            await watched.go(view);
            return watched;
        },
    };
    beforeAll(async () => {
        scene.server = await Server.start(configuration, args);
        browser = await launch();
    }, patience);
    afterEach(async () => {
        const closed = open.splice(0);
        for (const watched of closed) await watched.close();
        expect(closed.flatMap((watched) => watched.offences)).toEqual([]);
    });
    afterAll(async () => {
        await browser?.close();
        await scene.server?.stop();
    }, patience);
    return scene;
}
