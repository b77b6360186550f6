import { loadStreamSettings } from "@/api/configuration";
import { useLoaded } from "@/common/loaded";
import { Notice } from "@/common/notice";
import { useEvents } from "@/common/server";
import { SettingsForm } from "@/form/settings_form";

/** What a stream is to do, in a form made of its schema. */
export function SettingsTab({ id }: { id: string }) {
    const part = useLoaded(`settings ${id}`, () => loadStreamSettings(id));
    useEvents(["configuration"], part.reload);
    return (
        <>
            {part.problem !== undefined && <Notice kind="error">{part.problem}</Notice>}
            {part.value && (
                <SettingsForm
                    part={part.value}
                    root={`streams.${id}`}
                    followedName="the common value"
                    onApplied={part.reload}
                />
            )}
        </>
    );
}
