import { loadCommonSettings } from "@/api/configuration";
import { useLoaded } from "@/common/loaded";
import { Notice } from "@/common/notice";
import { useEvents } from "@/common/server";
import { SettingsForm } from "./settings_form";

/** The settings of all algorithms, which streams follow where they have none of their own. */
export function CommonSettingsView() {
    const part = useLoaded("common settings", loadCommonSettings);
    useEvents(["configuration"], part.reload);
    return (
        <>
            <div className="title">
                <h1>Settings</h1>
            </div>
            <p className="lead">Streams follow these values, except where they have been given their own.</p>
            {part.problem !== undefined && <Notice kind="error">{part.problem}</Notice>}
            {part.value && (
                <SettingsForm part={part.value} root="algorithms" followedName="the default" onApplied={part.reload} />
            )}
        </>
    );
}
